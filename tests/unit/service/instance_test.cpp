// The process's one service object: its creation, who gets it when, and its end. Each test needs a process that has not
// created it yet.
#include "alone.h"
#include "service_fixture.h"
#include "waits_for_lock.h"

using velmora::dvbservice::BrowserDVBService;

namespace {

class TheServiceObject : public testing::Test {
protected:
    void SetUp() override {
        if (!isAlone()) {
            GTEST_SKIP() << "another test of this process may have made it";
        }
        recording::reset();
    }
    void TearDown() override { recording::reset(); }

    static std::size_t creations() {
        std::size_t count = 0;
        for (const recording::LogLine& line : recording::log()) {
            count += line.message.rfind("Creating BrowserDVBService", 0) == 0 ? 1 : 0;
        }
        return count;
    }
    /// Calls a function once, on the creator's thread, at the first line of `function` that starts with `beginning`.
    static void atLine(const std::string& function, const std::string& beginning, std::function<void()> reaction) {
        recording::setLogAction([=, done = std::make_shared<std::atomic<bool>>(false)](const recording::LogLine& line) {
            if (line.function == function && line.message.rfind(beginning, 0) == 0 && !done->exchange(true)) {
                reaction();
            }
        });
    }
    std::future<BrowserDVBService*> askOnAnotherThread() {
        return std::async(std::launch::async, [] { return BrowserDVBService::getInstance(); });
    }

    std::future<BrowserDVBService*> second;
};

}  // namespace

TEST_F(TheServiceObject, ConnectsThenRequestsTheChannel) {
    BrowserDVBService* const service = BrowserDVBService::getInstance();
    ASSERT_NE(service, nullptr);
    ASSERT_EQ(recording::sent().size(), 1U);
    EXPECT_EQ(recording::sent()[0].header.messageId, 0x28671246U);
    std::vector<std::string> functions;
    for (const recording::LogLine& line : recording::log()) {
        if (line.file == "browser_dvb_service.cpp" || line.file == "browser_dvb_service_commands.cpp" ||
            line.function == "start" || line.function == "addClient") {
            functions.push_back(line.function);
        }
    }
    EXPECT_EQ(functions.front(), "BrowserDVBService");
    EXPECT_EQ(functions.at(1), "start");
    EXPECT_EQ(functions.at(functions.size() - 2), "start");
    EXPECT_EQ(functions.back(), "TriggerServiceInfoAcquire");
    EXPECT_EQ(recording::logOf("start").size(), 3U);
    recording::reset();
    EXPECT_EQ(BrowserDVBService::getInstance(), service);
    EXPECT_TRUE(recording::log().empty());
    EXPECT_TRUE(recording::sent().empty());
}

TEST_F(TheServiceObject, IsCreatedOnceWhenAskedDuringConstruction) {
    std::future_status during = std::future_status::ready;
    atLine("BrowserDVBService", "Creating", [&] {
        second = askOnAnotherThread();
        during = second.wait_for(std::chrono::milliseconds(200));
    });
    BrowserDVBService* const first = BrowserDVBService::getInstance();
    EXPECT_EQ(second.get(), first);
    EXPECT_EQ(during, std::future_status::timeout) << "there is nothing to give yet";
    EXPECT_EQ(creations(), 1U);
    EXPECT_EQ(recording::logOf("start").size(), 3U);
    EXPECT_EQ(recording::sent().size(), 1U);
}

TEST_F(TheServiceObject, IsAvailableWhileItConnects) {
    bool given = false;
    atLine("start", "called.", [&] {
        second = askOnAnotherThread();
        given = isReady(second);
    });
    BrowserDVBService* const first = BrowserDVBService::getInstance();
    EXPECT_TRUE(given);
    EXPECT_EQ(second.get(), first);
    EXPECT_EQ(recording::sent().size(), 1U);
}

TEST_F(TheServiceObject, IsAvailableDuringTheChannelRequest) {
    bool given = false;
    recording::setSendAction([&](const recording::SentMessage&) {
        second = askOnAnotherThread();
        given = isReady(second);
        return 0;
    });
    BrowserDVBService* const first = BrowserDVBService::getInstance();
    EXPECT_TRUE(given);
    EXPECT_EQ(second.get(), first);
}

TEST_F(TheServiceObject, RequestsTheChannelWithoutAProxy) {
    recording::setStartResult(-3);
    EXPECT_NE(BrowserDVBService::getInstance(), nullptr);
    EXPECT_TRUE(recording::sent().empty());
    EXPECT_THAT(recording::logOf("TriggerServiceInfoAcquire"), testing::SizeIs(1));
}

TEST_F(TheServiceObject, SurvivesAFailedChannelRequest) {
    recording::setSendResult(-107);
    BrowserDVBService* const service = BrowserDVBService::getInstance();
    EXPECT_NE(service, nullptr);
    EXPECT_EQ(recording::sent().size(), 1U);
    EXPECT_EQ(BrowserDVBService::getInstance(), service);
    EXPECT_EQ(recording::sent().size(), 1U);
}

TEST_F(TheServiceObject, IsDestroyedWhenTheProcessEnds) {
    const auto end = [] {
        // Registered first, so it runs after the object was destroyed.
        std::atexit([] {
            for (const recording::LogLine& line : recording::log()) {
                std::fputs(line.message.c_str(), stderr);
            }
        });
        BrowserDVBService::getInstance();
        std::exit(0);
    };
    EXPECT_EXIT(end(), testing::ExitedWithCode(0), testing::HasSubstr("Destroy BrowserDVBService(0x"));
}
