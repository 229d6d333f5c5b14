// The singleton: the values of its word, and which thread waits.
#include "singleton.h"

#include <future>

#include "ait_fixture.h"
#include "eventually.h"
#include "seams.h"

namespace {

using velmora::base::Singleton;

/// A singleton class that reads its own word during construction and counts its constructions.
template <int number>
struct Watched {
    Watched() {
        ++constructions();
        wordSeen() = __atomic_load_n(&Singleton<Watched>::instance_, __ATOMIC_SEQ_CST);
        if (during()) {
            during()();
        }
    }
    static std::atomic<int>& constructions() {
        static std::atomic<int> count{0};
        return count;
    }
    static std::intptr_t& wordSeen() {
        static std::intptr_t word = -1;
        return word;
    }
    static std::function<void()>& during() {
        static std::function<void()> action;
        return action;
    }
};

template <typename T>
void setWord(std::intptr_t value) {
    __atomic_store_n(&Singleton<T>::instance_, value, __ATOMIC_SEQ_CST);
}

}  // namespace

TEST(TheSingletonScheme, GoesFromNoneToTheAddress) {
    using T = Watched<1>;
    setWord<T>(0);
    T* const instance = Singleton<T>::get();
    EXPECT_EQ(T::wordSeen(), 1);
    EXPECT_EQ(Singleton<T>::instance_, reinterpret_cast<std::intptr_t>(instance));
    EXPECT_EQ(Singleton<T>::get(), instance);
    EXPECT_EQ(T::constructions(), 1);
}

TEST(TheSingletonScheme, BlocksASecondCallerDuringCreation) {
    using T = Watched<2>;
    seams::reset();
    std::future<T*> second;
    // The first construction continues once the second caller waits or has also begun to construct.
    T::during() = [&second] {
        T::during() = nullptr;
        second = std::async(std::launch::async, [] { return Singleton<T>::get(); });
        EXPECT_TRUE(eventually([] { return seams::waitsForInstance() == 1 || T::constructions() > 1; }));
    };
    T* const first = Singleton<T>::get();
    EXPECT_EQ(second.get(), first);
    EXPECT_EQ(T::constructions(), 1);
    EXPECT_EQ(seams::waitsForInstance(), 1);
}

TEST(TheSingletonScheme, GivesAnyWordAboveTheMarkWithoutWaiting) {
    using T = Watched<3>;
    seams::reset();
    // The last is an address in the upper half of the address space.
    for (const std::intptr_t word : {std::intptr_t{2}, std::intptr_t{0x1000}, std::intptr_t{-16}}) {
        setWord<T>(word);
        EXPECT_EQ(reinterpret_cast<std::intptr_t>(Singleton<T>::get()), word);
    }
    EXPECT_EQ(T::constructions(), 0);
    EXPECT_EQ(seams::waitsForInstance(), 0);
}

TEST(TheSingletonScheme, WaitsForWhoeverHasSetTheMark) {
    using T = Watched<4>;
    seams::reset();
    setWord<T>(1);
    std::future<T*> waiting = std::async(std::launch::async, [] { return Singleton<T>::get(); });
    EXPECT_TRUE(eventually([] { return seams::waitsForInstance() == 1 || T::constructions() > 0; }));
    setWord<T>(0x2000);
    EXPECT_EQ(reinterpret_cast<std::intptr_t>(waiting.get()), 0x2000);
    EXPECT_EQ(T::constructions(), 0);
}
