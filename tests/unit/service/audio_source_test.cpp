// The one operation that waits for an answer: the audio source.
#include <future>

#include "service_fixture.h"

namespace velmora::dvbservice {

/// Looks at what the service object keeps to itself.
struct BrowserDVBServiceTestAccess {
    /// Session and result of the last report.
    static std::pair<unsigned int, int> lastAudioReport(BrowserDVBService& service) {
        const std::lock_guard<std::mutex> lock(service.audioSourceLock);
        return {service.audioSourceFinishedSession, service.audioSourceResult};
    }
};

}  // namespace velmora::dvbservice

namespace {

using velmora::dvbservice::BrowserDVBServiceTestAccess;

constexpr const char* kFile = "browser_dvb_service_commands.cpp";

class AnAudioSourceRequest : public AServiceObject {
protected:
    /// A request on a thread of its own. It has been sent when this returns, and its thread is in its wait as soon as
    /// the lock can be had, which is how an answer finds it there.
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

TEST_F(AnAudioSourceRequest, TakesAnAnswerToAnOlderSessionAsAFailureAndReturnsItsResult) {
    std::future<int> first = request("a");
    answer(1, 0);
    EXPECT_EQ(first.get(), 0);
    std::future<int> second = request("b");
    recording::reset();
    answer(1, 0);
    EXPECT_EQ(second.get(), 0);
    EXPECT_THAT(requestLines(), testing::ElementsAre(failure("set audio source failed, session 1, result 0\n")));
}

TEST_F(AnAudioSourceRequest, IgnoresALateAnswerUntilTheNextRequestMeetsAnother) {
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
