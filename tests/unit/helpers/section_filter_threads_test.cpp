// SectionFilter and the delivery thread: what its end waits for, and many filters at once.
#include <thread>

#include "eventually.h"
#include "section_filter_fixture.h"

namespace {

struct Receiver {
    std::atomic<bool> ended{false};
    std::atomic<int> sections{0};
};

}  // namespace

TEST_F(ASectionFilter, WaitsAtItsEndForARunningReceiver) {
    std::promise<void> entered;
    std::promise<void> mayReturn;
    std::atomic<bool> returned{false};
    auto filter = std::make_unique<SectionFilter>(open(SectionDelivery::every, [&] {
        entered.set_value();
        mayReturn.get_future().wait();
        returned = true;
    }));
    write(lastSession(), {1});
    ASSERT_TRUE(isReady(entered.get_future()));
    std::future<bool> closed = std::async(std::launch::async, [&] {
        filter.reset();
        return returned.load();
    });
    // It cannot end during this wait, however long it is.
    EXPECT_EQ(closed.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    mayReturn.set_value();
    EXPECT_TRUE(closed.get());
    EXPECT_EQ(sentCount(kFilterClose), 1U);
}

TEST_F(ASectionFilter, FreesItsReceiverOnTheThreadThatClosesIt) {
    struct Captured {
        explicit Captured(std::promise<std::thread::id>& newFreed) : freed(newFreed) {}
        ~Captured() { freed.set_value(std::this_thread::get_id()); }
        std::promise<std::thread::id>& freed;
    };
    std::promise<std::thread::id> freed;
    SectionFilter filter(api, 18, SectionPattern::any(),
                         [captured = std::make_shared<Captured>(freed)](const unsigned char*, unsigned int) {});
    // What the delivery thread has while it delivers a section.
    const auto delivered = SectionRouter::theOne().find(lastSession());
    filter.close();
    std::future<std::thread::id> by = freed.get_future();
    ASSERT_TRUE(isReady(by));
    EXPECT_EQ(by.get(), std::this_thread::get_id());
}

TEST_F(ASectionFilter, OfOneSectionMayEndWhileThatIsDelivered) {
    for (int round = 0; round < 200; ++round) {
        const std::size_t before = receivedCount();
        SectionFilter filter = open(SectionDelivery::once);
        write(lastSession(), {1});
        if (round % 2 == 0) {
            ASSERT_TRUE(eventually([&] { return receivedCount() > before; }));
        }
        filter.close();
    }
    waitForDelivery();
    EXPECT_EQ(sentCount(kFilterClose), 201U) << "one of each, and the marker's";
    EXPECT_GE(receivedCount(), 100U);
    EXPECT_LE(receivedCount(), 200U);
}

TEST_F(ASectionFilter, NeverCallsAReceiverAfterItsEnd) {
    constexpr unsigned int kThreads = 4;
    constexpr int kRounds = 40;
    std::atomic<bool> calledAfterItsEnd{false};
    std::atomic<int> delivered{0};
    const auto openAndClose = [&](unsigned int pid) {
        for (int round = 0; round < kRounds; ++round) {
            const auto receiver = std::make_shared<Receiver>();
            SectionFilter filter(api, pid, SectionPattern::any(), [&, receiver](const unsigned char*, unsigned int) {
                calledAfterItsEnd = calledAfterItsEnd || receiver->ended;
                ++receiver->sections;
                ++delivered;
            });
            const std::string session = sessionOf(pid);
            for (unsigned char number = 0; number < 3; ++number) {
                write(session, {number});
            }
            if (round % 2 == 0) {
                EXPECT_TRUE(eventually([&receiver] { return receiver->sections > 0; }));
            }
            filter.close();
            receiver->ended = true;
        }
    };
    std::vector<std::future<void>> threads;
    for (unsigned int thread = 0; thread < kThreads; ++thread) {
        threads.push_back(std::async(std::launch::async, openAndClose, 100 + thread));
    }
    for (std::future<void>& thread : threads) {
        thread.get();
    }
    waitForDelivery();
    EXPECT_FALSE(calledAfterItsEnd);
    EXPECT_GE(delivered, static_cast<int>(kThreads) * kRounds / 2);
    EXPECT_EQ(sentCount(kFilterClose), kThreads * kRounds + 1) << "the marker too";
}
