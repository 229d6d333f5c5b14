// The programme guide that dtvctl prints.
#include <gmock/gmock.h>

#include "guides.h"
#include "service_process.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

/// What dtvctl prints for the command epg.
std::string epg(const std::vector<std::string>& options) {
    std::vector<std::string> words = {"epg"};
    words.insert(words.end(), options.begin(), options.end());
    ChildProcess console(DTVCTL, words, "dtvctl");
    EXPECT_EQ(console.wait(), 0);
    return console.output();
}

std::vector<std::string> guideNow() {
    return guideOf(json::parse(epg({"--json", "--seconds", "0"})).at("services"));
}

}  // namespace

TEST(TheProgrammeGuide, IsThatOfTheBroadcast) {
    const tsmake::Multiplex multiplex = scheduledBroadcast();
    const ServiceProcess service(writeBroadcast(multiplex, 12, "scheduled.ts"));
    EXPECT_THAT(guideNow(), testing::IsEmpty()) << "it is read from now on";
    EXPECT_TRUE(eventually([&] { return guideNow().size() >= guideOf(multiplex).size(); }));
    EXPECT_EQ(guideNow(), guideOf(multiplex));
    EXPECT_THAT(epg({"--seconds", "0"}), HasSubstr("1:1025:28106 Velmora One HD\n"
                                                   "  2026-01-01 09:00   1:00  Morning on the Lake\n"));
    EXPECT_THAT(epg({"--xmltv", "--seconds", "0"}), HasSubstr("    <title lang=\"eng\">Later &lt;28120/30&gt;</title>\n"
                                                              "    <desc lang=\"eng\">About 28120/30</desc>\n"));
}

TEST(TheProgrammeGuide, IsReadForAsLongAsIsWanted) {
    const ServiceProcess service;
    EXPECT_GE(json::parse(epg({"--json", "--seconds", "1"})).at("collected_seconds"), 1.0);
}

TEST(TheProgrammeGuide, IsRefusedWithWrongOptions) {
    ChildProcess tooLong(DTVCTL, {"epg", "--seconds", "601"}, "long");
    EXPECT_EQ(tooLong.wait(), 2);
    EXPECT_THAT(tooLong.output(), HasSubstr("dtvctl: --seconds"));
    ChildProcess elsewhere(DTVCTL, {"status", "--xmltv"}, "elsewhere");
    EXPECT_EQ(elsewhere.wait(), 2);
}
