// What a scenario may say, and how each error is named by its place.
#include "scenario.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using dtvservice::parseScenario;
using dtvservice::Scenario;
using testing::HasSubstr;

std::string errorOf(const std::string& text) {
    std::string error;
    EXPECT_FALSE(parseScenario(text, error));
    return error;
}
/// The error of a scenario with one step.
std::string errorOfStep(const std::string& step) {
    return errorOf(R"({"steps":[)" + step + "]}");
}
std::optional<Scenario> scenarioOf(const std::string& text) {
    std::string error;
    std::optional<Scenario> scenario = parseScenario(text, error);
    EXPECT_EQ(error, "");
    return scenario;
}

}  // namespace

TEST(AScenario, HasStepsAtTimesAndUponCommands) {
    const auto scenario = scenarioOf(R"({"name":"two","seconds":9,"repeat":3,"stay":true,"steps":[
        {"at":1.5,"tune":{"onid":1,"tsid":1025,"sid":28107}},
        {"upon":"cmdFilterOpen","nth":4,"browser":2,"after":0.25,"answer-late":{"event":"onFilterOpened","by":2}}]})");
    ASSERT_TRUE(scenario);
    EXPECT_EQ(scenario->name, "two");
    EXPECT_EQ(scenario->length->count(), 9);
    EXPECT_EQ(scenario->rounds, 3U);
    EXPECT_TRUE(scenario->stay);
    ASSERT_EQ(scenario->steps.size(), 2U);
    EXPECT_EQ(scenario->steps[0].at.count(), 1.5);
    EXPECT_EQ(scenario->steps[0].action->name, std::string("tune"));
    EXPECT_EQ(scenario->steps[0].values["sid"], 28107);
    EXPECT_EQ(scenario->steps[1].upon, 0x28671243U);
    EXPECT_EQ(scenario->steps[1].nth, 4U);
    EXPECT_EQ(scenario->steps[1].browser, 2U);
    EXPECT_EQ(scenario->steps[1].after->count(), 0.25);
}

TEST(AScenario, IsNamedAndRunsOnceUnlessItSaysOtherwise) {
    const auto scenario = scenarioOf(R"({"steps":[{"at":0,"stop-terminals":{}}]})");
    ASSERT_TRUE(scenario);
    EXPECT_EQ(scenario->name, "scenario");
    EXPECT_EQ(scenario->rounds, 1U);
    EXPECT_FALSE(scenario->length);
    EXPECT_FALSE(scenario->stay);
}

TEST(AScenario, MayWriteAWholeNumberWithAFractionOfZero) {
    const auto scenario = scenarioOf(R"({"steps":[{"at":0,"ca-insert":{"slot":2.0}}]})");
    ASSERT_TRUE(scenario);
    EXPECT_EQ(scenario->steps[0].values.dump(), R"({"slot":2})");
}

TEST(AScenario, ThatIsNoJsonIsNamedByLineAndColumn) {
    EXPECT_THAT(errorOf("{\"steps\":[\n {\"at\" 1}]}"), testing::StartsWith("line 2, column 8: syntax error"));
    EXPECT_THAT(errorOf(""), testing::StartsWith("line 1, column 1: "));
}

TEST(AScenario, NamesAWrongNumberByItsPlaceAndRange) {
    EXPECT_EQ(errorOf(R"({"steps":[{"at":0,"stop-terminals":{}},{"at":0,"tune":{"onid":1,"tsid":2,"sid":70000}}]})"),
              "steps[1].tune.sid: 70000 is not a number from 0 to 65535");
    EXPECT_EQ(errorOfStep(R"({"at":0,"ca-insert":{"slot":1.5}})"),
              "steps[0].ca-insert.slot: 1.5 is not a whole number from 0 to 65535");
    EXPECT_EQ(errorOfStep(R"({"at":0,"ca-insert":{"slot":"one"}})"),
              "steps[0].ca-insert.slot: \"one\" is not a number from 0 to 65535");
    EXPECT_EQ(errorOfStep(R"({"at":0,"engine":{"engine_status":-2147483649}})"),
              "steps[0].engine.engine_status: -2147483649 is not a number from -2147483648 to 2147483647");
    EXPECT_EQ(errorOfStep(R"({"at":-0.5,"stop-terminals":{}})"), "steps[0].at: -0.5 is not a number from 0 to 86400");
    EXPECT_EQ(errorOfStep(R"({"at":0,"ca-reply":{"code":0,"ca_session":18446744073709551616}})"),
              "steps[0].ca-reply.ca_session: 1.8446744073709552e+19 is not a whole number from 0 to "
              "18446744073709551615");
}

TEST(AScenario, NamesWrongFlagsAndTexts) {
    EXPECT_EQ(errorOfStep(R"({"at":0,"osd":{"layer":1,"on":"yes"}})"),
              "steps[0].osd.on: \"yes\" is neither true nor false");
    EXPECT_EQ(errorOfStep(R"({"at":0,"stream-event":{"event_id":7,"data":7}})"),
              "steps[0].stream-event.data: 7 is not a text of at most 245 bytes");
    EXPECT_EQ(errorOf(R"({"name":[],"steps":[{"at":0,"stop-terminals":{}}]})"),
              "name: a list is not a text of at most 100 bytes");
}

TEST(AScenario, NamesTheNearestToAnUnknownName) {
    EXPECT_THAT(
        errorOfStep(R"({"upon":"cmdTuneToServis","stop-terminals":{}})"),
        testing::StartsWith("steps[0].upon: there is no command \"cmdTuneToServis\"; the nearest: cmdTuneToService, "));
    EXPECT_THAT(errorOfStep(R"({"at":0,"answer-twice":{"event":"onFilterOpen"}})"),
                testing::StartsWith(
                    "steps[0].answer-twice.event: there is no event \"onFilterOpen\"; the nearest: onFilterOpened, "));
    EXPECT_THAT(errorOfStep(R"({"at":0,"undo":{"fault":"signal"}})"),
                HasSubstr("steps[0].undo.fault: there is no lasting fault \"signal\"; the nearest: signal-lost, "));
    EXPECT_THAT(errorOfStep(R"({"at":0,"undo":{"fault":5}})"), HasSubstr("5 is not the name of a lasting fault"));
}

TEST(AScenario, NamesUnknownAndMissingKeys) {
    EXPECT_EQ(errorOfStep(R"({"at":0,"osd":{"layer":1,"onn":true}})"),
              "steps[0].osd: there is no key \"onn\"; the nearest: on, layer; steps[0].osd.on: is missing");
    EXPECT_THAT(errorOfStep(R"({"at":0,"signal-last":{}})"),
                testing::StartsWith("steps[0]: there is no key \"signal-last\"; the nearest: signal-lost, "));
    EXPECT_EQ(errorOfStep(R"({"at":0,"stop-terminals":{"a":1}})"), "steps[0].stop-terminals: there is no key \"a\"");
    EXPECT_EQ(errorOf("{}"), "steps: is missing");
    EXPECT_THAT(errorOf(R"({"steps":[],"nam":"x"})"), HasSubstr("there is no key \"nam\"; the nearest: name, "));
}

TEST(AScenario, NeedsOneActionAndOneTriggerInAStep) {
    EXPECT_EQ(errorOfStep(R"({"at":0})"), "steps[0]: has no action");
    EXPECT_EQ(errorOfStep(R"({"at":0,"osd":{"layer":1,"on":true},"stop-terminals":{}})"),
              "steps[0]: has 2 actions, but must have one: osd, stop-terminals");
    EXPECT_EQ(errorOfStep(R"({"stop-terminals":{}})"), "steps[0]: needs one of at and upon");
    EXPECT_EQ(errorOfStep(R"({"at":0,"upon":"cmdFilterOpen","stop-terminals":{}})"),
              "steps[0]: needs one of at and upon");
    EXPECT_EQ(errorOfStep(R"({"at":0,"nth":2,"stop-terminals":{}})"),
              "steps[0].nth: is only for a step upon a command");
    EXPECT_EQ(errorOf(R"({"seconds":1,"steps":[{"upon":"cmdFilterOpen","nth":2,"every":true,"stop-terminals":{}}]})"),
              "steps[0]: needs one of nth and every, not both");
    EXPECT_EQ(errorOfStep(R"({"upon":"cmdFilterOpen","every":true,"stop-terminals":{}})"),
              "steps[0].every: would never end: the scenario needs seconds");
    EXPECT_EQ(errorOf(R"({"seconds":1,"steps":[{"at":2,"stop-terminals":{}}]})"),
              "steps[0].at: 2 is behind the end of the scenario, 1");
}

TEST(AScenario, NamesWhatIsNoObjectOrNoList) {
    EXPECT_EQ(errorOf("[]"), "a scenario is an object");
    EXPECT_EQ(errorOf(R"({"steps":7})"), "steps: is not a list of 1 to 1000 steps");
    EXPECT_EQ(errorOf(R"({"steps":[]})"), "steps: is not a list of 1 to 1000 steps");
    EXPECT_EQ(errorOfStep("7"), "steps[0]: 7 is not a step, which is an object");
    EXPECT_EQ(errorOfStep(R"({"at":0,"stop-terminals":true})"), "steps[0].stop-terminals: true is not an object");
}

TEST(AScenario, NamesAKeyThatAnObjectHasTwice) {
    EXPECT_EQ(errorOfStep(R"({"at":0,"at":1,"stop-terminals":{}})"), "an object has the key \"at\" twice");
    EXPECT_TRUE(scenarioOf(R"({"steps":[{"at":0,"ca-insert":{"slot":1}},{"at":1,"ca-insert":{"slot":1}}]})"));
}

TEST(AScenario, HasAllItsErrorsNamedUpToTen) {
    std::string steps = "7";
    for (int count = 0; count < 20; ++count) {
        steps += ",7";
    }
    const std::string error = errorOfStep(steps);
    EXPECT_THAT(error, HasSubstr("steps[9]: "));
    EXPECT_THAT(error, testing::Not(HasSubstr("steps[10]: ")));
}

TEST(AScenario, IsBounded) {
    EXPECT_EQ(errorOf(std::string(262145, ' ')), "it has more than 262144 bytes");
    EXPECT_THAT(errorOf(std::string(200000, '[')), HasSubstr("line 1, column"));
    EXPECT_EQ(errorOfStep(R"({"at":0,"tune":)" + std::string(50000, '[') + std::string(50000, ']') + "}"),
              "it is nested deeper than any scenario");
}
