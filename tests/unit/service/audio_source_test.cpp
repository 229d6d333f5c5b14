// The audio source: the one operation that waits for an answer.
#include <future>

#include "eventually.h"
#include "service_fixture.h"
#include "waits_for_lock.h"
#include "wrapped_time.h"

namespace {

constexpr const char* kFile = "browser_dvb_service_commands.cpp";

class AnAudioSourceRequest : public AServiceObject {
protected:
    /// Starts a request on its own thread and returns after its send. The thread holds the lock until it waits, so an
    /// answer, which takes the lock, always finds it waiting.
    std::future<int> request(const std::string& source) {
        const std::size_t before = recording::sent().size();
        std::future<int> result =
            std::async(std::launch::async, [this, source] { return service->setAudioSourceSync(source); });
        EXPECT_TRUE(recording::waitForSent(before + 1));
        return result;
    }
    static void answer(unsigned int session, int result) {
        injectEvent<messages::OnSetAudioSourceFinished>(session, result);
    }
    std::mutex& lock() { return BrowserDVBServiceTestAccess::audioSourceLock(*service); }
    static auto line(const std::string& message) {
        return logged::tagged(kOrdinary, kTag, kFile, "setAudioSourceSync", message);
    }
    static auto failure(const std::string& message) {
        return logged::tagged(kFailure, kTag, kFile, "setAudioSourceSync", message);
    }
    static std::vector<recording::LogLine> requestLines() {
        std::vector<recording::LogLine> own;
        for (recording::LogLine& entry : lines()) {
            if (entry.function == "setAudioSourceSync") {
                own.push_back(std::move(entry));
            }
        }
        return own;
    }
};

}  // namespace

TEST_F(AnAudioSourceRequest, ReturnsTheReportedSuccess) {
    std::future<int> result = request("hdmi");
    answer(1, 0);
    EXPECT_EQ(result.get(), 0);
    EXPECT_EQ(hexText(theSent().wire), hexText("00000001 00000004 00000000 68646D69"));
    EXPECT_THAT(requestLines(), testing::ElementsAre(line("set audio source, session 1\n"),
                                                     line("set audio source successfully, session 1\n")));
}

TEST_F(AnAudioSourceRequest, ReturnsTheReportedFailure) {
    std::future<int> result = request("hdmi");
    answer(1, -7);
    EXPECT_EQ(result.get(), -7);
    EXPECT_THAT(requestLines(), testing::ElementsAre(line("set audio source, session 1\n"),
                                                     failure("set audio source failed, session 1, result -7\n")));
}

TEST_F(AnAudioSourceRequest, FailsOnAnAnswerToAnOlderSession) {
    std::future<int> first = request("a");
    answer(1, 0);
    EXPECT_EQ(first.get(), 0);
    std::future<int> second = request("b");
    recording::reset();
    answer(1, 0);
    EXPECT_EQ(second.get(), 0);
    EXPECT_THAT(requestLines(), testing::ElementsAre(failure("set audio source failed, session 1, result 0\n")));
}

TEST_F(AnAudioSourceRequest, IgnoresALateAnswer) {
    answer(41, -3);
    EXPECT_EQ(BrowserDVBServiceTestAccess::lastAudioReport(*service), (std::pair<unsigned int, int>(41, -3)));
    std::future<int> result = request("a");
    answer(1, 0);
    EXPECT_EQ(result.get(), 0);
}

TEST_F(AnAudioSourceRequest, StillWaitsAfterASendThatFailed) {
    recording::setSendResult(-107);
    std::future<int> result = request("a");
    EXPECT_TRUE(recording::waitForLog("Failed. -107"));
    EXPECT_EQ(result.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    answer(1, 0);
    EXPECT_EQ(result.get(), 0);
}

TEST_F(AnAudioSourceRequest, ThatOverlapsAnotherMakesItReportFailure) {
    std::future<int> first = request("a");
    std::future<int> second = request("b");
    answer(1, 0);
    EXPECT_EQ(first.get(), 0);
    EXPECT_EQ(second.get(), 0);
    EXPECT_THAT(requestLines(),
                testing::ElementsAre(line("set audio source, session 1\n"), line("set audio source, session 2\n"),
                                     failure("set audio source failed, session 1, result 0\n"),
                                     failure("set audio source failed, session 1, result 0\n")));
}

TEST_F(AnAudioSourceRequest, IsTraced) {
    std::future<int> result = request("a");
    answer(1, 0);
    result.get();
    const std::vector<std::string> traces = logged::traces();
    ASSERT_EQ(traces.size(), 4U);
    EXPECT_EQ(traces.front(), tracePair("setAudioSourceSync", kFile).front());
    EXPECT_EQ(traces.back(), tracePair("setAudioSourceSync", kFile).back());
}

TEST_F(AnAudioSourceRequest, CountsFromOne) {
    EXPECT_EQ(BrowserDVBServiceTestAccess::lastAudioReport(*service), (std::pair<unsigned int, int>(0, 0)));
    for (const unsigned int session : {1U, 2U, 3U}) {
        recording::reset();
        std::future<int> result = request("a");
        answer(session, 0);
        EXPECT_EQ(result.get(), 0);
        EXPECT_EQ(theSent().wire[3], session);
        EXPECT_THAT(requestLines(), testing::Contains(line("set audio source successfully, session " +
                                                           std::to_string(session) + "\n")));
    }
}

TEST_F(AnAudioSourceRequest, FailsOnAnAnswerToANewerSession) {
    std::future<int> result = request("a");
    answer(2, 0);
    EXPECT_EQ(result.get(), 0);
    EXPECT_THAT(requestLines(), testing::Contains(failure("set audio source failed, session 2, result 0\n")));
}

TEST_F(AnAudioSourceRequest, TakesAPositiveResultAsAFailure) {
    std::future<int> result = request("a");
    answer(1, 5);
    EXPECT_EQ(result.get(), 5);
    EXPECT_THAT(requestLines(), testing::Contains(failure("set audio source failed, session 1, result 5\n")));
}

TEST_F(AnAudioSourceRequest, HoldsItsLockAcrossTheSend) {
    bool freeDuringSend = true;
    recording::setSendAction([&](const recording::SentMessage&) {
        freeDuringSend = isFree(lock());
        return 0;
    });
    std::future<int> result = request("a");
    answer(1, 0);
    EXPECT_EQ(result.get(), 0);
    EXPECT_FALSE(freeDuringSend) << "the answer may come before the wait";
}

TEST_F(AnAudioSourceRequest, HoldsItsLockFromFirstToLastLine) {
    std::vector<std::string> freeAt;
    std::vector<std::string> heldAt;
    recording::setLogAction([&](const recording::LogLine& entry) {
        if (entry.text.find("setAudioSourceSync") != std::string::npos) {
            (isFree(lock()) ? freeAt : heldAt).push_back(entry.level == blog::kTrace ? "trace" : entry.message);
        }
    });
    std::future<int> result = request("a");
    answer(1, 0);
    EXPECT_EQ(result.get(), 0);
    recording::setLogAction(nullptr);
    EXPECT_THAT(heldAt,
                testing::ElementsAre("set audio source, session 1\n", "set audio source successfully, session 1\n"));
    EXPECT_THAT(freeAt, testing::ElementsAre("trace", "trace"));
}

TEST_F(AnAudioSourceRequest, TakesItsAnswerUnderItsLock) {
    EXPECT_TRUE(waitsForLock(lock(), [this] {
        frame::MsgIds ids;
        service->onSetAudioSourceFinished(ids, {}, 9, 8);
    }));
    bool freeAtLine = false;
    recording::setLogAction([&](const recording::LogLine& entry) {
        freeAtLine = freeAtLine || (entry.message == "set audio source finished:7,6.\n" && isFree(lock()));
    });
    answer(7, 6);
    recording::setLogAction(nullptr);
    EXPECT_TRUE(freeAtLine);
    EXPECT_EQ(BrowserDVBServiceTestAccess::lastAudioReport(*service), (std::pair<unsigned int, int>(7, 6)));
}

TEST_F(AnAudioSourceRequest, WaitsWithoutALimit) {
    wrapped_time::setTimedWaits(BrowserDVBServiceTestAccess::audioSourceCondition(*service),
                                wrapped_time::TimedWaits::asAsked);
    std::future<int> result = request("a");
    answer(1, 0);
    EXPECT_EQ(result.get(), 0);
    EXPECT_TRUE(wrapped_time::deadlines().empty());
    wrapped_time::asUsual();
}

TEST_F(AnAudioSourceRequest, TellsItsStoryInOrder) {
    std::future<int> result = request("a");
    // The answer writes its line without the lock, so wait for the end of the send first.
    ASSERT_TRUE(eventually([] { return logged::story().back() == "<- setAudioSource"; }));
    answer(1, 0);
    result.get();
    EXPECT_THAT(logged::story(),
                testing::ElementsAre(
                    "-> setAudioSourceSync", "setAudioSourceSync: set audio source, session 1\n", "-> setAudioSource",
                    "<- setAudioSource", "onSetAudioSourceFinished: set audio source finished:1,0.\n",
                    "setAudioSourceSync: set audio source successfully, session 1\n", "<- setAudioSourceSync"));
}
