// Tests of parsing the names of inputs on the command line.
#include "input_name.h"

#include <gtest/gtest.h>

namespace {

using dtvservice::InputName;
using dtvservice::parseInput;

std::string complaint(const std::string& text) {
    std::string error;
    EXPECT_FALSE(parseInput(text, error)) << text;
    return error;
}

InputName parsed(const std::string& text) {
    std::string error;
    const std::optional<InputName> input = parseInput(text, error);
    EXPECT_TRUE(input) << error;
    return input.value_or(InputName());
}

}  // namespace

TEST(AnInput, IsAFileUnlessItSaysOtherwise) {
    EXPECT_EQ(parsed("a/b.ts").path, "a/b.ts");
    EXPECT_EQ(parsed("file:c.ts").path, "c.ts");
    EXPECT_TRUE(parsed("file:-").isFile());
    EXPECT_EQ(parsed("-").kind, InputName::Kind::standardInput);
}

TEST(AnInput, OfDatagramsHasAHostAndAPort) {
    const InputName group = parsed("udp://@239.1.2.3:5000?interface=127.0.0.1");
    EXPECT_EQ(group.kind, InputName::Kind::udp);
    EXPECT_EQ(group.host, "239.1.2.3");
    EXPECT_EQ(group.port, 5000);
    EXPECT_EQ(group.interface, "127.0.0.1");
    EXPECT_EQ(parsed("rtp://[::1]:1").host, "::1");
    EXPECT_EQ(parsed("rtp://:65535").host, "");
}

TEST(AnInput, IsRefusedWithTheReason) {
    EXPECT_EQ(complaint(""), "input \"\": no file is named");
    EXPECT_EQ(complaint("file:"), "input \"file:\": no file is named");
    EXPECT_EQ(complaint("http://x"), "input \"http://x\": unknown kind of input \"http\"");
    EXPECT_EQ(complaint("udp://1.2.3.4"), "input \"udp://1.2.3.4\": no port: HOST:PORT is needed");
    EXPECT_EQ(complaint("udp://1.2.3.4:0"), "input \"udp://1.2.3.4:0\": port \"0\" is not a number from 1 to 65535");
    EXPECT_EQ(complaint("rtp://:70000"), "input \"rtp://:70000\": port \"70000\" is not a number from 1 to 65535");
    EXPECT_EQ(complaint("rtp://:1?ttl=3"), "input \"rtp://:1?ttl=3\": \"ttl=3\" is not interface=ADDRESS");
}

TEST(AnInput, OfAnAdapterHasItsNumbersAndWhatToTuneTo) {
    const InputName input = parsed("dvb://2/1?delivery_system=DVBT&frequency=1");
    EXPECT_EQ(input.kind, InputName::Kind::dvb);
    EXPECT_EQ(input.adapter, 2U);
    EXPECT_EQ(input.frontend, 1U);
    ASSERT_EQ(input.options.size(), 2U);
    EXPECT_EQ(input.options[1].name, "frequency");
    EXPECT_EQ(input.options[1].value, "1");
    EXPECT_EQ(complaint("dvb://"), "input \"dvb://\": \"\" is not ADAPTER or ADAPTER/FRONTEND in numbers");
    EXPECT_EQ(complaint("dvb://0/x"), "input \"dvb://0/x\": \"0/x\" is not ADAPTER or ADAPTER/FRONTEND in numbers");
    EXPECT_EQ(complaint("dvb://0?frequency"), "input \"dvb://0?frequency\": \"frequency\" is not NAME=VALUE");
}
