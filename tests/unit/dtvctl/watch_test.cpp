// Tests of finding changes between two answers.
#include "watch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "some_answers.h"

using nlohmann::json;

namespace {

std::vector<std::string> textsBetween(const json& before, const json& after) {
    std::vector<std::string> texts;
    for (const json& change : dtvctl::changesBetween(before, after)) {
        texts.push_back(dtvctl::changeText(change));
    }
    return texts;
}

}  // namespace

TEST(AWatch, BeginsWithAllThereIs) {
    json status = aStatus();
    status["browsers"] = {3};
    status["inputs"][0]["crc_errors"] = 2;
    EXPECT_THAT(textsBetween(json(), status),
                testing::ElementsAre("presented: none", "input 1 (udp://:5000): silent for 3 s",
                                     "input 1: crc errors 2", "browser 3 connected"));
}

TEST(AWatch, SaysNothingWhileNothingChanges) {
    json later = aStatus();
    later["inputs"][0]["reason"] = "silent for 4 s";
    later["inputs"][0]["bit_rate"] = 10;
    later["inputs"][0]["packets"] = 10;
    EXPECT_THAT(textsBetween(aStatus(), later), testing::IsEmpty());
}

TEST(AWatch, TellsEachChange) {
    json before = aStatus();
    before["browsers"] = {1, 2};
    json after = aStatus();
    after["browsers"] = {2, 5};
    after["presented_service"] = aService();
    after["inputs"][0]["state"] = "playing";
    after["inputs"][0]["reason"] = "playing";
    after["inputs"][0]["continuity_errors"] = 7;
    after["filters"] = 3;
    after["osd_layers"] = {4};
    EXPECT_THAT(textsBetween(before, after),
                testing::ElementsAre("presented: 1:1025:28106 Velmora One HD", "input 1 (udp://:5000): playing",
                                     "input 1: continuity errors 7", "browser 5 connected", "browser 1 disconnected",
                                     "filters 3", "osd layers [4]"));
}

TEST(AWatch, EscapesWhatControlsATerminal) {
    json after = aStatus();
    after["browsers"] = {"\u202e"};
    EXPECT_THAT(textsBetween(aStatus(), after), testing::ElementsAre("browser \"\\u202e\" connected"));
}

TEST(AWatch, TellsAnotherReasonOfAFailure) {
    json before = aStatus();
    before["inputs"][0]["state"] = "failed";
    json after = before;
    after["inputs"][0]["reason"] = "x.ts is empty";
    EXPECT_THAT(textsBetween(before, after), testing::ElementsAre("input 1 (udp://:5000): x.ts is empty"));
}

TEST(AWatch, LeavesOutAServiceThatIsNotPresented) {
    json before = aStatus();
    before["presented_service"] = aService();
    EXPECT_THAT(dtvctl::changesBetween(before, aStatus()),
                testing::ElementsAre(json({{"event", "presented_service"}})));
    EXPECT_THAT(textsBetween(before, aStatus()), testing::ElementsAre("presented: none"));
}

TEST(AWatch, GivesChangesAsObjects) {
    json after = aStatus();
    after["inputs"][0]["skipped_bytes"] = 9;
    after["filters"] = 1;
    EXPECT_THAT(dtvctl::changesBetween(aStatus(), after),
                testing::ElementsAre(json({{"event", "errors"}, {"input", 1}, {"skipped_bytes", 9}}),
                                     json({{"event", "filters"}, {"filters", 1}})));
}
