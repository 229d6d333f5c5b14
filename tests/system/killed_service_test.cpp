// The service is killed at every step of what a browser asks of it. A stopped service has the request and does not
// answer.
#include "library_browser.h"

namespace {

class AKilledService : public faults::ALibraryBrowser {
protected:
    AKilledService() {
        faults::HandshakeTime::stand();
        start();
        EXPECT_TRUE(connects());
    }
    void start() { service = std::make_unique<ServiceProcess>(); }
    void kill() {
        service->end(SIGKILL);
        EXPECT_TRUE(isCutOff());
    }
    void startAnew() {
        start();
        ASSERT_TRUE(connects());
    }
    /// Lets the longest wait pass. A wait looks at the clock when any filter is confirmed.
    void endsTheWait(std::future<bool>& result) {
        faults::HandshakeTime::pass(11);
        ASSERT_TRUE(opens(other, "another filter"));
        EXPECT_EQ(result.wait_for(std::chrono::seconds(20)), std::future_status::ready);
        EXPECT_FALSE(result.get());
    }

    std::unique_ptr<ServiceProcess> service;
    faults::CountingFilter& filter = newFilter();
    faults::CountingFilter& other = newFilter();
    const std::string session = Filters::getInstance()->generateSessionName();
};

}  // namespace

TEST_F(AKilledService, LeavesAFilterUnopenedThatIsAskedForAfterwards) {
    kill();
    std::future<bool> opened = waitsForConfirmation([this] { return opens(filter, session); });
    startAnew();
    endsTheWait(opened);
    EXPECT_FALSE(closes(filter, session)) << "the new service does not know it";
    EXPECT_TRUE(opens(filter, session)) << "under the same name";
    EXPECT_TRUE(receives(filter));
}

TEST_F(AKilledService, LeavesAFilterUnopenedThatItHasNotAnswered) {
    ASSERT_TRUE(faults::stops(service->pid()));
    std::future<bool> opened = waitsForConfirmation([this] { return opens(filter, session); });
    kill();
    startAnew();
    endsTheWait(opened);
    EXPECT_FALSE(closes(filter, session));
    EXPECT_TRUE(opens(filter, session));
    EXPECT_TRUE(receives(filter));
}

TEST_F(AKilledService, StopsTheSectionsOfAnOpenFilter) {
    ASSERT_TRUE(opens(filter, session));
    ASSERT_TRUE(receives(filter));
    kill();
    startAnew();
    ASSERT_TRUE(opens(other, "another filter"));
    const std::uint64_t before = filter.received;
    ASSERT_TRUE(receives(other));
    EXPECT_EQ(filter.received, before) << "it is not opened again by itself";
    EXPECT_FALSE(closes(filter, session));
    EXPECT_TRUE(opens(filter, session));
    EXPECT_TRUE(receives(filter));
}

TEST_F(AKilledService, LeavesAFilterClosedThatItHasNotConfirmed) {
    ASSERT_TRUE(opens(filter, session));
    ASSERT_TRUE(receives(filter));
    ASSERT_TRUE(faults::stops(service->pid()));
    std::future<bool> closed = waitsForConfirmation([this] { return closes(filter, session); });
    kill();
    startAnew();
    endsTheWait(closed);
    EXPECT_TRUE(opens(filter, session));
    EXPECT_TRUE(receives(filter));
}

TEST_F(AKilledService, ForgetsATune) {
    ASSERT_TRUE(tunesTo(28106));
    ASSERT_TRUE(faults::stops(service->pid()));
    tune(28107);
    kill();
    tune(28108);
    EXPECT_EQ(Api::getInstance()->getCurrentCCID(), "ccid:1:1025:28106") << "the last one that was presented";
    startAnew();
    EXPECT_TRUE(tunesTo(28107));
    EXPECT_EQ(service->log().find("28108"), std::string::npos) << "nothing is sent later";
}

TEST_F(AKilledService, LetsAnAudioSourceWaitUntilTheNextAnswer) {
    ASSERT_TRUE(faults::stops(service->pid()));
    std::future<int> first = std::async(std::launch::async, [] { return Api::getInstance()->setAudioSource("a"); });
    ASSERT_TRUE(eventually([] { return faults::ownLog().find("set audio source, session 1") != std::string::npos; }));
    kill();
    startAnew();
    ASSERT_TRUE(opens(filter, session)) << "other requests are answered meanwhile";
    EXPECT_EQ(first.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    EXPECT_EQ(Api::getInstance()->setAudioSource("b"), 0);
    EXPECT_EQ(first.wait_for(std::chrono::seconds(20)), std::future_status::ready);
    EXPECT_EQ(first.get(), 0) << "the answer to the newer request";
}
