// Tests of operators' requests and their answers.
#include "operator_requests.h"

#include <gtest/gtest.h>

#include "request_values.h"

namespace {

using nlohmann::json;

class AnOperatorsRequest : public testing::Test {
protected:
    dtvservice::OperatorRequests requests;
};

}  // namespace

TEST_F(AnOperatorsRequest, IsAnsweredByAllItsHandlers) {
    requests.add("status", [](const json&) { return json{{"slots", 2}}; });
    requests.add("other", [](const json&) { return json{{"unasked", true}}; });
    requests.add("status", [](const json&) { return json{{"layers", 3}}; });
    EXPECT_EQ(requests.answer(R"({"command":"status"})"), R"({"layers":3,"ok":true,"slots":2})");
}

TEST_F(AnOperatorsRequest, WithALongAnswerIsOnlyBegunAtOnce) {
    int made = 0;
    requests.addLong("guide", [&made](const json& request) -> dtvservice::OperatorRequests::Rest {
        dtvservice::get<std::string>(request, "format");
        return [&made] { return json{{"made", ++made}}; };
    });
    const dtvservice::OperatorRequests::Answer answer = requests.begin(R"({"command":"guide","format":"short"})");
    EXPECT_EQ(made, 0);
    EXPECT_EQ(answer(), R"({"made":1,"ok":true})");
    EXPECT_EQ(requests.answer(R"({"command":"guide"})"), R"({"error":"format is missing","ok":false})");
    EXPECT_EQ(made, 1);
}

TEST_F(AnOperatorsRequest, IsRefusedWithTheReason) {
    requests.add("osd", [](const json& request) {
        return json{{"was", dtvservice::getNumber<std::uint8_t>(request, "layer")}};
    });
    const auto refused = [](const std::string& error) { return R"({"error":")" + error + R"(","ok":false})"; };
    EXPECT_EQ(requests.answer("osd"), refused("a request is a JSON object in one line"));
    EXPECT_EQ(requests.answer("{}"), refused("command is missing"));
    EXPECT_EQ(requests.answer(R"({"command":7})"), refused("command is of the wrong kind"));
    EXPECT_EQ(requests.answer(R"({"command":"sing"})"), refused("unknown command sing"));
    EXPECT_EQ(requests.answer(R"({"command":"osd"})"), refused("layer is missing"));
    EXPECT_EQ(requests.answer(R"({"command":"osd","layer":256})"), refused("layer is out of range"));
    EXPECT_EQ(requests.answer(R"({"command":"osd","layer":1.5})"), refused("layer is out of range"));
    EXPECT_EQ(requests.answer(R"({"command":"osd","layer":1e300})"), refused("layer is out of range"));
    EXPECT_EQ(requests.answer(R"({"command":"osd","layer":true})"), refused("layer is of the wrong kind"));
    EXPECT_EQ(requests.answer(R"({"command":"osd","layer":255})"), R"({"ok":true,"was":255})");
}
