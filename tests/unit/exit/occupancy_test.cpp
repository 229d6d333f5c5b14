// Which threads count as inside an object, and when the object may be destroyed.
#include "occupancy.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <future>
#include <thread>

namespace {

using lo::browserdvbservice::Occupancy;
using As = Occupancy::As;
using Stay = Occupancy::Stay;

constexpr std::chrono::milliseconds kAtOnce{0};
constexpr std::chrono::seconds kLong{20};

/// A thread that stays inside until the test tells it to leave.
class Visitor {
public:
    Visitor(Occupancy& occupancy, As role) {
        std::promise<void> entered;
        thread = std::thread([&, role] {
            const Stay stay(occupancy, role);
            entered.set_value();
            mayLeave.get_future().wait();
        });
        entered.get_future().wait();
    }
    Visitor(const Visitor&) = delete;
    Visitor& operator=(const Visitor&) = delete;
    ~Visitor() {
        leave();
        thread.join();
    }
    void leave() {
        if (!told) {
            told = true;
            mayLeave.set_value();
        }
    }

private:
    std::promise<void> mayLeave;
    bool told = false;
    std::thread thread;
};

}  // namespace

TEST(AnOccupancy, LetsNobodyInOnceItWasClosedEmpty) {
    Occupancy occupancy;
    EXPECT_TRUE(Stay(occupancy, As::caller));
    EXPECT_TRUE(Stay(occupancy, As::worker));
    EXPECT_TRUE(occupancy.close(kAtOnce));
    EXPECT_FALSE(Stay(occupancy, As::caller));
    EXPECT_FALSE(Stay(occupancy, As::worker));
    EXPECT_FALSE(occupancy.admits(As::caller));
    EXPECT_TRUE(occupancy.close(kAtOnce)) << "closing again changes nothing";
}

TEST(AnOccupancy, AdmitsCallersAfterAFailedClose) {
    Occupancy occupancy;
    {
        const Visitor visitor(occupancy, As::caller);
        EXPECT_FALSE(occupancy.close(kLong));
    }
    EXPECT_TRUE(Stay(occupancy, As::caller));
    EXPECT_FALSE(Stay(occupancy, As::worker));
}

TEST(AnOccupancy, WaitsForTheWorkersInside) {
    Occupancy occupancy;
    Visitor worker(occupancy, As::worker);
    EXPECT_FALSE(occupancy.close(kAtOnce));
    std::future<bool> closed = std::async(std::launch::async, [&] { return occupancy.close(kLong); });
    worker.leave();
    EXPECT_TRUE(closed.get());
}

TEST(AnOccupancy, WaitsForAReservedWorker) {
    Occupancy occupancy;
    occupancy.reserve();
    EXPECT_FALSE(occupancy.close(kAtOnce));
    { const Stay stay = occupancy.reserved(); }
    EXPECT_TRUE(occupancy.close(kAtOnce));
}

TEST(AnOccupancy, WaitsForNoWorkerThatIsGivenBack) {
    Occupancy occupancy;
    occupancy.reserve();
    occupancy.giveBack();
    EXPECT_TRUE(occupancy.close(kAtOnce));
}

TEST(AnOccupancy, CountsItsCloserButDoesNotWaitForIt) {
    Occupancy occupancy;
    const Stay worker(occupancy, As::worker);
    EXPECT_FALSE(occupancy.close(kLong));
}

TEST(AnOccupancy, AdmitsItsOwnThreadsWhileClosing) {
    Occupancy occupancy;
    const Stay worker(occupancy, As::worker);
    EXPECT_FALSE(occupancy.close(kAtOnce));
    EXPECT_TRUE(Stay(occupancy, As::worker));
    Occupancy other;
    EXPECT_TRUE(other.close(kAtOnce));
    EXPECT_FALSE(Stay(other, As::caller)) << "being inside of one object lets nobody into another";
}

TEST(AnOccupancy, IsNotEnteredByAStayThatWasRefused) {
    Occupancy occupancy;
    EXPECT_TRUE(occupancy.close(kAtOnce));
    const Stay refused(occupancy, As::worker);
    EXPECT_FALSE(refused);
    EXPECT_FALSE(Stay(occupancy, As::caller)) << "only a thread that is inside may enter again";
    EXPECT_TRUE(occupancy.close(kLong)) << "there is no worker to wait for";
}

TEST(AnOccupancy, DoesNotCountAStayBetweenLeavingAndEnteringAgain) {
    Occupancy occupancy;
    Stay worker(occupancy, As::worker);
    worker.leave();
    EXPECT_FALSE(worker);
    worker.leave();
    EXPECT_TRUE(worker.enterAgain());
    EXPECT_TRUE(worker);
    EXPECT_FALSE(occupancy.close(kLong)) << "it is inside, and is not waited for";
    EXPECT_TRUE(Stay(occupancy, As::worker)) << "this thread is inside";
    worker.leave();
    EXPECT_FALSE(Stay(occupancy, As::worker)) << "this thread is no longer inside";
    EXPECT_FALSE(worker.enterAgain());
    EXPECT_FALSE(worker);
    EXPECT_TRUE(occupancy.close(kAtOnce)) << "nobody was counted twice";
}

TEST(AnOccupancy, WaitsForAWorkerThatEnteredAgain) {
    Occupancy occupancy;
    std::promise<void> inside;
    std::promise<void> mayLeave;
    std::thread thread([&] {
        Stay worker(occupancy, As::worker);
        worker.leave();
        EXPECT_TRUE(worker.enterAgain());
        inside.set_value();
        mayLeave.get_future().wait();
        worker.leave();
    });
    inside.get_future().wait();
    EXPECT_FALSE(occupancy.close(kAtOnce));
    std::future<bool> closed = std::async(std::launch::async, [&] { return occupancy.close(kLong); });
    mayLeave.set_value();
    EXPECT_TRUE(closed.get());
    thread.join();
}

TEST(AnOccupancy, IsNotClosedByItsOwnCaller) {
    Occupancy occupancy;
    {
        const Stay caller(occupancy, As::caller);
        EXPECT_FALSE(occupancy.close(kLong)) << "it returns at once, because no worker is inside";
    }
    EXPECT_TRUE(occupancy.close(kAtOnce));
}

TEST(AnOccupancy, TakesAThreadForAnotherWhereTheProcessHasNoMoreKeys) {
    for (pthread_key_t key = 0; pthread_key_create(&key, nullptr) == 0;) {
    }
    Occupancy occupancy;
    {
        const Stay worker(occupancy, As::worker);
        EXPECT_FALSE(occupancy.close(kAtOnce));
        EXPECT_FALSE(Stay(occupancy, As::worker)) << "it does not know that it is inside";
        EXPECT_TRUE(Stay(occupancy, As::caller));
    }
    EXPECT_TRUE(occupancy.close(kAtOnce));
}
