// What of a recorded browser belongs together.
#include "lanes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "recorded.h"

namespace {

using namespace recorded;
using dtvservice::Lane;
using testing::ElementsAre;

std::vector<std::size_t> recordsOf(const Lane& lane) {
    std::vector<std::size_t> records;
    for (const dtvservice::RecordedStep* const step : lane.steps) {
        records.push_back(step->record);
    }
    return records;
}

bus::Record opens(const std::string& filter) {
    return message<messages::CmdFilterOpen>(0, filter, 18U, lo::browserdvbservice::OpenFilterMatchMask_t());
}

}  // namespace

TEST(TheLanes, AreOneForEachFilterAndOneForTheRest) {
    const dtvservice::Recording recording = recordingOf(
        {message<messages::OnOSDStateChanged>(0, 1U, 2U), opens("one"), opens("two"), section(0, "two", "bytes"),
         message<messages::OnFilterOpened>(0, std::string("one"), std::string("one")),
         message<messages::CmdSendPtsRequest>(0, 1U), message<messages::CmdFilterClose>(0, std::string("two")),
         message<messages::CmdStartPMTRequest>(0, std::string("pmt"), 1U), section(0, "pmt", "bytes"),
         section(0, "one", "bytes")});
    ASSERT_EQ(recording.problems.size(), 0U);
    const std::vector<Lane> lanes = lanesOf(recording.browsers[0]);
    ASSERT_EQ(lanes.size(), 4U);
    EXPECT_THAT(recordsOf(lanes[0]), ElementsAre(1, 6));
    EXPECT_FALSE(lanes[0].isOfAFilter);
    EXPECT_THAT(recordsOf(lanes[1]), ElementsAre(2, 5, 10));
    EXPECT_TRUE(lanes[1].isOfAFilter);
    EXPECT_THAT(recordsOf(lanes[2]), ElementsAre(3, 4, 7));
    EXPECT_THAT(recordsOf(lanes[3]), ElementsAre(8, 9));
}

TEST(TheLanes, BeginAnewWhereAFilterIsOpenedAgain) {
    const dtvservice::Recording recording =
        recordingOf({opens("one"), section(0, "one", "a"), opens("one"), section(0, "one", "b")});
    const std::vector<Lane> lanes = lanesOf(recording.browsers[0]);
    ASSERT_EQ(lanes.size(), 3U);
    EXPECT_THAT(recordsOf(lanes[1]), ElementsAre(1, 2));
    EXPECT_THAT(recordsOf(lanes[2]), ElementsAre(3, 4));
}

TEST(TheLanes, KeepWithTheRestWhatBelongsToAFilterOpenedBeforeTheRecording) {
    const dtvservice::Recording recording =
        recordingOf({section(0, "one", "a"), message<messages::CmdFilterClose>(0, std::string("one"))});
    const std::vector<Lane> lanes = lanesOf(recording.browsers[0]);
    ASSERT_EQ(lanes.size(), 1U);
    EXPECT_THAT(recordsOf(lanes[0]), ElementsAre(1, 2));
}

TEST(TheLanes, HaveNoCommandsThatNoServiceAnswers) {
    const dtvservice::Recording recording =
        recordingOf({message<messages::CmdStopOSDDetection>(0, 1U), message<messages::CmdStartOSDDetection>(0, 1U),
                     message<messages::CmdUpdateIPCChannelNames>(0, std::string("q"), std::string(), std::string())});
    const std::vector<Lane> lanes = lanesOf(recording.browsers[0]);
    EXPECT_THAT(recordsOf(lanes[0]), ElementsAre(2));
}
