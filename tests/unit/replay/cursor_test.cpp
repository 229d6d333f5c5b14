// What a browser is told of a recording, and when.
#include "cursor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "message_layout.h"
#include "recorded.h"

namespace {

using namespace recorded;
using namespace std::chrono_literals;
using dtvservice::Cursor;
using dtvservice::Pace;
using dtvservice::RecordedStep;
using message_fields::Value;
using testing::ElementsAre;
using testing::IsEmpty;

/// Notes what a cursor does.
class NotedStage : public dtvservice::Stage {
public:
    void event(const message_fields::Message& message, const std::vector<Value>& values) override {
        std::string text = message.name;
        for (const Value& value : values) {
            const auto* const words = std::get_if<std::string>(&value);
            const auto* const number = std::get_if<std::uint64_t>(&value);
            text += " " + (words != nullptr ? *words : std::to_string(number != nullptr ? *number : 0));
        }
        noted.push_back(text);
    }
    bool section(const std::string& filter, const std::string& bytes) override {
        if (hasRoom) {
            noted.push_back("section " + filter + " " + bytes);
        }
        return hasRoom;
    }
    void sectionLost(const std::string& filter, const std::string& bytes) override {
        noted.push_back("lost " + filter + " " + bytes);
    }
    void seen(const RecordedStep& step, const std::string& filter) override {
        noted.push_back("seen " + filter + step.text);
    }
    void missed(const RecordedStep& command) override {
        noted.push_back(std::string("missed ") + command.message->name);
    }
    void left() override { noted.emplace_back("left"); }

    std::vector<std::string> taken() { return std::exchange(noted, {}); }

    bool hasRoom = true;

private:
    std::vector<std::string> noted;
};

class ACursor : public testing::Test {
protected:
    void walks(const std::vector<bus::Record>& records, Pace pace = {}) {
        recording = recordingOf(records);
        ASSERT_THAT(recording.problems, IsEmpty());
        ASSERT_FALSE(recording.browsers.empty());
        for (const RecordedStep& step : recording.browsers.front().steps) {
            lane.steps.push_back(&step);
        }
        cursor.emplace(lane, pace, made, stage, start);
    }
    /// What it does at this time, and when it wants to be run again.
    std::vector<std::string> at(std::chrono::milliseconds time, std::size_t barrier = Cursor::kNoRecord) {
        const std::optional<Cursor::Time> next = cursor->run(start + time, barrier);
        again =
            next ? std::optional(std::chrono::duration_cast<std::chrono::milliseconds>(*next - start)) : std::nullopt;
        return stage.taken();
    }
    template <typename Message, typename... Values>
    Cursor::Found comes(const Values&... values) {
        const message_fields::Message* const command = message_fields::findMessage(Message::header().messageId);
        Cursor::Values fields;
        std::string error;
        EXPECT_TRUE(message_fields::readImage(*command, dtvservice::MessageImage::of(values...), fields, error));
        return cursor->take(*command, fields);
    }
    static bus::Record status(std::uint64_t time, int number) {
        return message<messages::OnOSDStateChanged>(time, 0U, static_cast<unsigned int>(number));
    }
    static lo::browserdvbservice::OpenFilterMatchMask_t matching(unsigned char tableId) {
        lo::browserdvbservice::OpenFilterMatchMask_t filter;
        filter.mask = {tableId};
        filter.maskBits = {0xFF};
        return filter;
    }

    const Cursor::Time start = Cursor::Time() + 1000s;
    NotedStage stage;
    dtvservice::Recording recording;
    dtvservice::Lane lane;
    dtvservice::MadeValues made;
    std::optional<Cursor> cursor;
    std::optional<std::chrono::milliseconds> again;
};

}  // namespace

TEST_F(ACursor, SendsEventsAtTheirRecordedDistances) {
    walks({status(1000, 1), status(1300, 2), status(1300, 3), status(9300, 4)});
    EXPECT_THAT(at(0ms), ElementsAre("onOSDStateChanged 0 1"));
    EXPECT_EQ(again, 300ms);
    EXPECT_THAT(at(299ms), IsEmpty());
    EXPECT_THAT(at(305ms), ElementsAre("onOSDStateChanged 0 2", "onOSDStateChanged 0 3"));
    EXPECT_EQ(again, 8300ms) << "what is late does not delay the rest";
    EXPECT_THAT(at(8300ms), ElementsAre("onOSDStateChanged 0 4"));
    EXPECT_EQ(again, std::nullopt);
    EXPECT_TRUE(cursor->isAtEnd());
}

TEST_F(ACursor, SendsAllEventsAtOnceWhenItIsFast) {
    walks({status(1000, 1), status(1300, 2), status(99300, 3)}, {true, Pace::kFastWait});
    EXPECT_THAT(at(0ms), testing::SizeIs(3));
    EXPECT_TRUE(cursor->isAtEnd());
}

TEST_F(ACursor, MakesNoPauseWhereTheClockWasSetBack) {
    walks({status(5000, 1), status(1000, 2), status(1100, 3)});
    EXPECT_THAT(at(0ms), ElementsAre("onOSDStateChanged 0 1", "onOSDStateChanged 0 2"));
    EXPECT_EQ(again, 100ms);
}

TEST_F(ACursor, RestsWhenItHasSentMuchAtOnce) {
    std::vector<bus::Record> records;
    constexpr int kEvents = 100;
    for (int count = 0; count < kEvents; ++count) {
        records.push_back(message<messages::OnAitSectionAvailable>(0, std::string(4096, 'x')));
    }
    walks(records, {true, Pace::kFastWait});
    std::size_t seen = at(0ms).size();
    EXPECT_LT(seen, kEvents) << "a browser that does not read so fast would be cut off";
    while (again) {
        seen += at(*again).size();
    }
    EXPECT_EQ(seen, kEvents);
}

TEST_F(ACursor, WaitsForARecordedCommand) {
    walks({status(0, 1), message<messages::CmdStartOSDDetection>(200, 3U), status(250, 2)});
    EXPECT_THAT(at(0ms), ElementsAre("onOSDStateChanged 0 1"));
    EXPECT_EQ(again, 200ms + Pace::kWait) << "it may come as late as it may, after its recorded time";
    EXPECT_THAT(at(3000ms), IsEmpty());
    EXPECT_EQ(comes<messages::CmdStartOSDDetection>(3U), Cursor::Found::next);
    EXPECT_THAT(at(3000ms), IsEmpty());
    EXPECT_EQ(again, 3050ms) << "the recorded distance begins with the command";
    EXPECT_THAT(at(3050ms), ElementsAre("onOSDStateChanged 0 2"));
}

TEST_F(ACursor, GoesOnWithoutACommandThatDoesNotCome) {
    walks({status(0, 1), message<messages::CmdStartOSDDetection>(200, 3U), status(250, 2)});
    at(0ms);
    EXPECT_THAT(at(5199ms), IsEmpty());
    EXPECT_THAT(at(5200ms), ElementsAre("missed cmdStartOSDDetection"));
    EXPECT_THAT(at(5250ms), ElementsAre("onOSDStateChanged 0 2"));
    EXPECT_EQ(comes<messages::CmdStartOSDDetection>(3U), Cursor::Found::late);
    EXPECT_EQ(comes<messages::CmdStartOSDDetection>(3U), Cursor::Found::none) << "it stands for one command only";
}

TEST_F(ACursor, GoesOnWithoutACommandSoonerWhenItIsFast) {
    walks({message<messages::CmdStartOSDDetection>(60000, 3U), status(70000, 2)}, {true, Pace::kFastWait});
    at(0ms);
    EXPECT_EQ(again, 1000ms);
    EXPECT_THAT(at(1000ms), ElementsAre("missed cmdStartOSDDetection", "onOSDStateChanged 0 2"));
}

TEST_F(ACursor, KeepsACommandThatComesEarlyForItsPlace) {
    walks({message<messages::CmdStartOSDDetection>(0, 1U), status(0, 1), message<messages::CmdStartOSDDetection>(0, 2U),
           status(0, 2)});
    EXPECT_EQ(comes<messages::CmdStartOSDDetection>(2U), Cursor::Found::early);
    EXPECT_THAT(at(0ms), IsEmpty());
    EXPECT_EQ(comes<messages::CmdStartOSDDetection>(1U), Cursor::Found::next);
    EXPECT_THAT(at(0ms), ElementsAre("onOSDStateChanged 0 1", "onOSDStateChanged 0 2"));
    EXPECT_TRUE(cursor->isAtEnd());
}

TEST_F(ACursor, DoesNotTakeACommandWithOtherValues) {
    walks({message<messages::CmdStartOSDDetection>(0, 1U)});
    EXPECT_EQ(comes<messages::CmdStartOSDDetection>(2U), Cursor::Found::none);
    EXPECT_EQ(comes<messages::CmdStopOSDDetection>(1U), Cursor::Found::none);
    EXPECT_EQ(comes<messages::CmdStartOSDDetection>(1U), Cursor::Found::next);
}

TEST_F(ACursor, CallsFiltersAsTheLiveBrowserDoes) {
    walks({message<messages::CmdFilterOpen>(0, std::string("A-1"), 18U, matching(0x4E)),
           message<messages::OnFilterOpened>(0, std::string("A-1"), std::string("A-1")), section(0, "A-1", "bytes"),
           message<messages::CmdFilterClose>(0, std::string("A-1")),
           message<messages::OnFilterClosed>(0, std::string("A-1"))});
    EXPECT_EQ(comes<messages::CmdFilterOpen>(std::string("B-7"), 18U, matching(0x50)), Cursor::Found::none);
    EXPECT_EQ(comes<messages::CmdFilterOpen>(std::string("B-7"), 18U, matching(0x4E)), Cursor::Found::next);
    EXPECT_THAT(at(0ms), ElementsAre("onFilterOpened B-7 B-7", "section B-7 bytes"));
    EXPECT_EQ(comes<messages::CmdFilterClose>(std::string("A-1")), Cursor::Found::none);
    EXPECT_EQ(comes<messages::CmdFilterClose>(std::string("B-7")), Cursor::Found::next);
    EXPECT_THAT(at(0ms), ElementsAre("onFilterClosed B-7"));
}

TEST_F(ACursor, TellsTwoFiltersOfTheSamePatternApart) {
    walks({message<messages::CmdFilterOpen>(0, std::string("one"), 0U, matching(0)),
           message<messages::CmdFilterOpen>(0, std::string("two"), 0U, matching(0)), section(0, "one", "a"),
           message<messages::CmdFilterClose>(0, std::string("two")), section(0, "one", "b")});
    comes<messages::CmdFilterOpen>(std::string("x"), 0U, matching(0));
    comes<messages::CmdFilterOpen>(std::string("y"), 0U, matching(0));
    EXPECT_THAT(at(0ms), ElementsAre("section x a"));
    EXPECT_EQ(comes<messages::CmdFilterClose>(std::string("x")), Cursor::Found::none);
    EXPECT_EQ(comes<messages::CmdFilterClose>(std::string("y")), Cursor::Found::next);
    EXPECT_THAT(at(0ms), ElementsAre("section x b"));
}

TEST_F(ACursor, NumbersAnAudioSourceAsTheLiveBrowserDoes) {
    walks({message<messages::CmdSetAudioSource>(0, 5U, std::string("broadcast")),
           message<messages::OnSetAudioSourceFinished>(0, 5U, 0)});
    EXPECT_EQ(comes<messages::CmdSetAudioSource>(1U, std::string("broadcast")), Cursor::Found::next);
    EXPECT_THAT(at(0ms), ElementsAre("onSetAudioSourceFinished 1 0"));
}

TEST_F(ACursor, HurriesToACommandThatItsBrowserWaitsFor) {
    walks({status(0, 1), status(60000, 2), message<messages::CmdStartOSDDetection>(61000, 3U),
           message<messages::CmdSetAudioSource>(90000, 1U, std::string("broadcast")),
           message<messages::OnSetAudioSourceFinished>(90001, 1U, 0), status(95000, 4)});
    at(0ms);
    EXPECT_EQ(again, 60000ms);
    EXPECT_EQ(comes<messages::CmdSetAudioSource>(7U, std::string("broadcast")), Cursor::Found::early);
    EXPECT_THAT(at(10ms), ElementsAre("onOSDStateChanged 0 2"));
    EXPECT_EQ(again, 1010ms) << "it waits for a command before it, but not long";
    EXPECT_THAT(at(1010ms), ElementsAre("missed cmdStartOSDDetection"));
    EXPECT_THAT(at(1011ms), ElementsAre("onSetAudioSourceFinished 7 0"));
    EXPECT_EQ(again, 6010ms) << "then it keeps the pace again";
}

TEST_F(ACursor, OfAFilterWaitsForItsCommandsHoweverLong) {
    lane.isOfAFilter = true;
    walks({message<messages::CmdFilterOpen>(0, std::string("one"), 0U, matching(0)), section(300, "one", "a"),
           message<messages::CmdFilterClose>(400, std::string("one"))});
    EXPECT_THAT(at(3600s), IsEmpty());
    EXPECT_EQ(again, std::nullopt);
    EXPECT_EQ(comes<messages::CmdFilterOpen>(std::string("x"), 0U, matching(0)), Cursor::Found::next);
    EXPECT_THAT(at(3600s), IsEmpty());
    EXPECT_EQ(again, 3600300ms) << "the recorded distance begins with the command";
    EXPECT_THAT(at(3600300ms), ElementsAre("section x a"));
    EXPECT_THAT(at(7200s), IsEmpty());
    EXPECT_FALSE(cursor->isAtEnd());
}

TEST_F(ACursor, KeepsPaceWithTheCommandsOfAnotherLane) {
    // The other lane's command was recorded behind the third, at 8900 ms.
    walks({status(0, 1), status(8000, 2), status(8800, 3), status(9000, 4), status(9500, 5)});
    lane.steps.clear();
    for (dtvservice::RecordedStep& step : recording.browsers.front().steps) {
        step.record += step.record > 3 ? 1 : 0;
        lane.steps.push_back(&step);
    }
    cursor.emplace(lane, Pace{}, made, stage, start);
    dtvservice::RecordedStep command;
    command.record = 4;
    command.time = 8900 * kMillisecond;
    EXPECT_THAT(at(0ms, command.record), ElementsAre("onOSDStateChanged 0 1"));
    cursor->follow(command, start + 100ms);
    EXPECT_THAT(at(100ms), ElementsAre("onOSDStateChanged 0 2", "onOSDStateChanged 0 3")) << "they were before it";
    EXPECT_EQ(again, 200ms) << "100 ms behind it";
    EXPECT_THAT(at(200ms), ElementsAre("onOSDStateChanged 0 4"));
    EXPECT_EQ(again, 700ms);
}

TEST_F(ACursor, KeepsWhatFollowsACommandOfAnotherLaneThatHasNotCome) {
    walks({status(0, 1), status(10, 2), status(20, 3)});
    constexpr std::size_t kSecond = 2;
    EXPECT_THAT(at(60000ms, kSecond), ElementsAre("onOSDStateChanged 0 1", "onOSDStateChanged 0 2"));
    EXPECT_EQ(again, std::nullopt);
    EXPECT_THAT(at(60001ms), ElementsAre("onOSDStateChanged 0 3"));
}

TEST_F(ACursor, WaitsForRoomInTheQueueAndNotForEver) {
    walks({section(0, "one", "a"), section(0, "one", "b")});
    stage.hasRoom = false;
    EXPECT_THAT(at(0ms), IsEmpty());
    ASSERT_TRUE(again);
    EXPECT_THAT(at(4999ms), IsEmpty());
    EXPECT_THAT(at(5000ms), ElementsAre("lost one a"));
    stage.hasRoom = true;
    EXPECT_THAT(at(5002ms), ElementsAre("section one b"));
}

TEST_F(ACursor, ShowsWhatWasRefusedAndSendsNothingThatWasNotSent) {
    bus::Record dropped = section(0, "one", "a");
    dropped.kind = bus::Kind::sectionDropped;
    walks({status(0, 1), refusal<messages::OnOSDStateChanged>(0, "not sent"), dropped,
           refusal<messages::CmdFilterOpen>(0, "no queue"), record(bus::Kind::disconnected, 0)});
    EXPECT_EQ(recording.unsentEvents, 1U);
    EXPECT_EQ(recording.droppedSections, 1U);
    EXPECT_THAT(at(0ms), ElementsAre("seen not sentnot sent", "seen oneone", "seen no queueno queue", "left"));
    EXPECT_TRUE(cursor->isAtEnd());
}
