// Counts the threads inside an object, and closes the object before its destruction.
#include "occupancy.h"

#include <pthread.h>

#include <cstdlib>

#include "locks/lock.h"

namespace lo::browserdvbservice {

namespace {

/// Where this thread's stays begin, a linked list with the newest one first. Each thread has a pointer of its own,
/// which ends with the thread. A pthread key instead of thread_local: a browser loads the library at run time, and
/// LeakSanitizer crashes on such a library's thread_local while its thread runs on at exit. Without a key or memory a
/// thread does not know its own stays: close() then waits for them until its time is over.
class NewestStays {
public:
    /// May be null.
    static Occupancy::Stay** ofThisThread() {
        const Key& own = key();
        void* const known = own.made ? pthread_getspecific(own.number) : nullptr;
        return known != nullptr ? static_cast<Occupancy::Stay**>(known) : make();
    }

private:
    struct Key {
        pthread_key_t number{};
        bool made = pthread_key_create(&number, std::free) == 0;
    };
    static const Key& key() {
        static const Key key;
        return key;
    }
    static Occupancy::Stay** make() {
        void* const made = key().made ? std::calloc(1, sizeof(Occupancy::Stay*)) : nullptr;
        if (made != nullptr && pthread_setspecific(key().number, made) != 0) {
            std::free(made);
            return nullptr;
        }
        return static_cast<Occupancy::Stay**>(made);
    }
};

const Occupancy::Stay* newestStay() {
    const Occupancy::Stay* const* const newest = NewestStays::ofThisThread();
    return newest != nullptr ? *newest : nullptr;
}

}  // namespace

Occupancy::Stay::Stay(Occupancy& newOccupancy, As newRole, bool isReserved)
    : occupancy(newOccupancy),
      role(newRole),
      entered(isReserved || newOccupancy.enter(newRole)),
      newest(NewestStays::ofThisThread()),
      outer(newest != nullptr ? *newest : nullptr) {
    if (newest != nullptr) {
        *newest = this;
    }
}

Occupancy::Stay::~Stay() {
    if (newest != nullptr) {
        *newest = outer;
    }
    leave();
}

void Occupancy::wakeCloser() {
    { const locks::Lock lock(mutex); }
    left.notify_all();
}

bool Occupancy::isInside() const {
    for (const Stay* stay = newestStay(); stay != nullptr; stay = stay->outer) {
        if (&stay->occupancy == this && stay->entered) {
            return true;
        }
    }
    return false;
}

/// The part of the count that belongs to this thread's own stays as a worker.
std::uint64_t Occupancy::ownWorkers() const {
    std::uint64_t own = 0;
    for (const Stay* stay = newestStay(); stay != nullptr; stay = stay->outer) {
        own += &stay->occupancy == this && stay->entered && stay->role == As::worker ? kWorker : 0;
    }
    return own;
}

bool Occupancy::close(std::chrono::milliseconds longest) {
    counts.fetch_or(kClosing);
    const std::uint64_t own = ownWorkers();
    {
        locks::Lock lock(mutex);
        left.wait_for(lock.forWaiting(), longest, [&] { return (counts.load() & kWorkers) == own; });
    }
    std::uint64_t nobody = counts.load() & ~kEverybody;
    return counts.compare_exchange_strong(nobody, nobody | kGone);
}

}  // namespace lo::browserdvbservice
