// Turns of threads that do something one at a time.
#include "platform/host/turns.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "eventually.h"

namespace {

using host::Turns;

void joinAll(std::vector<std::thread>& threads) {
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace

TEST(ThreadsThatTakeTurns, GoInTheOrderInWhichTheyCame) {
    constexpr std::uint32_t kMoreThanHaveABitOfTheirOwn = 40;
    Turns turns;
    std::vector<std::uint32_t> order;
    std::vector<std::uint32_t> expected;
    std::vector<std::thread> threads;
    turns.take();
    for (std::uint32_t number = 0; number < kMoreThanHaveABitOfTheirOwn; ++number) {
        threads.emplace_back([&turns, &order, number] {
            const Turns::Turn turn(&turns);
            order.push_back(number);
        });
        expected.push_back(number);
        ASSERT_TRUE(eventually([&] { return turns.size() == number + 2; }));
    }
    turns.pass();
    joinAll(threads);
    EXPECT_EQ(order, expected);
}

TEST(ThreadsThatTakeTurns, GoOneAtATime) {
    constexpr int kThreads = 4;
    constexpr int kTurns = 5000;
    Turns turns;
    int taken = 0;
    std::vector<std::thread> threads;
    for (int count = 0; count < kThreads; ++count) {
        threads.emplace_back([&turns, &taken] {
            for (int turn = 0; turn < kTurns; ++turn) {
                const Turns::Turn own(&turns);
                ++taken;
            }
        });
    }
    joinAll(threads);
    EXPECT_EQ(taken, kThreads * kTurns);
    EXPECT_EQ(turns.size(), 0U);
}

TEST(ThreadsThatTakeTurns, KnowWhetherItIsTheirs) {
    Turns turns;
    EXPECT_FALSE(turns.isMine());
    {
        const Turns::Turn own(&turns);
        EXPECT_TRUE(turns.isMine());
        std::thread([&turns] { EXPECT_FALSE(turns.isMine()); }).join();
    }
    EXPECT_FALSE(turns.isMine());
    const Turns::Turn none(nullptr);
    EXPECT_FALSE(turns.isMine());
}
