// Occupancy: counts the threads inside an object, so that it is not destroyed while they use it. Nobody joins these
// threads, and at the end of the process they may still run. A thread holds a Stay while it uses the object. Call
// close() before you destroy the object.
//
// Threads: any.
// Blocks:  close() while workers are inside, up to its time limit. Everything else: never.
// Locks:   mutex, a leaf, taken only to wait in close() and to wake it.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace lo::browserdvbservice {

class Occupancy {
public:
    /// A caller executes an operation of the object and may stay long, so close() does not wait for callers. A worker
    /// does one piece of work: close() waits for the workers inside and admits no new ones.
    enum class As { caller, worker };

    /// Marks one thread as inside for the lifetime of this object. False when the thread was not admitted.
    /// A thread ends its stays in the reverse order of their beginning.
    class Stay {
    public:
        Stay(Occupancy& newOccupancy, As newRole) : Stay(newOccupancy, newRole, false) {}
        Stay(const Stay&) = delete;
        Stay& operator=(const Stay&) = delete;
        ~Stay();
        explicit operator bool() const { return entered; }

        /// For a thread that comes again and again, which takes less than a new object each time. Between leave() and
        /// enterAgain() it is not inside.
        void leave() {
            if (entered) {
                entered = false;
                occupancy.leave(role);
            }
        }
        /// Call after leave(). Returns whether the thread was admitted.
        bool enterAgain() {
            entered = occupancy.enter(role);
            return entered;
        }

    private:
        friend class Occupancy;
        Stay(Occupancy& newOccupancy, As newRole, bool isReserved);

        Occupancy& occupancy;
        const As role;
        bool entered;
        Stay** const newest;  // this thread's, or null
        Stay* const outer;    // this thread's previous stay, in any object
    };

    Occupancy() = default;
    Occupancy(const Occupancy&) = delete;
    Occupancy& operator=(const Occupancy&) = delete;

    /// Counts a worker before its thread starts. The thread then enters with reserved(); without a thread, call
    /// giveBack().
    void reserve() { counts.fetch_add(kWorker); }
    void giveBack() { leave(As::worker); }
    Stay reserved() { return Stay(*this, As::worker, true); }

    /// Whether a thread that tries to enter at this moment would be admitted.
    bool admits(As role) const { return admits(role, counts.load()); }

    /// Waits up to `longest` until no other thread's worker is inside. True when nobody at all is inside then: the
    /// object may be destroyed, and nobody can enter again. False when a thread is inside, this one included: keep the
    /// object. Callers may still enter.
    bool close(std::chrono::milliseconds longest);

private:
    // Counts and flags share one word, so that checking for an empty object and closing it is one atomic step.
    static constexpr std::uint64_t kCaller = 1;
    static constexpr std::uint64_t kWorker = std::uint64_t{1} << 31U;
    static constexpr std::uint64_t kClosing = std::uint64_t{1} << 62U;
    static constexpr std::uint64_t kGone = std::uint64_t{1} << 63U;
    static constexpr std::uint64_t kWorkers = kClosing - kWorker;
    static constexpr std::uint64_t kEverybody = kClosing - kCaller;

    static constexpr std::uint64_t one(As role) { return role == As::worker ? kWorker : kCaller; }
    /// A thread that is inside already prevents the destruction, so it may always enter again.
    bool admits(As role, std::uint64_t seen) const {
        const std::uint64_t refusing = role == As::worker ? kGone | kClosing : kGone;
        return (seen & refusing) == 0 || isInside();
    }
    bool enter(As role) {
        std::uint64_t seen = counts.load();
        do {
            if (!admits(role, seen)) {
                return false;
            }
        } while (!counts.compare_exchange_weak(seen, seen + one(role)));
        return true;
    }
    void leave(As role) {
        if ((counts.fetch_sub(one(role)) & kClosing) != 0) {
            wakeCloser();
        }
    }
    void wakeCloser();
    bool isInside() const;
    std::uint64_t ownWorkers() const;

    std::atomic<std::uint64_t> counts{0};
    std::mutex mutex;
    std::condition_variable left;
};

}  // namespace lo::browserdvbservice
