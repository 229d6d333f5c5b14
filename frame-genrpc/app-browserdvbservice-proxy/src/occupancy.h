// Occupancy: who is inside of an object that may be destroyed while threads that nobody joins still use it, as at the
// end of the process. Threads announce themselves with a Stay; whoever wants to destroy the object closes it first.
//
// Threads: any.
// Blocks:  close() while workers are inside, up to its time. Everything else: never.
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
    /// Callers come with an operation of the object and may stay long, so nobody waits for them. Workers are there for
    /// one piece of work: close() waits for those inside, and lets no further one in.
    enum class As { caller, worker };

    /// The presence of one thread inside, for as long as it exists; false when the object is gone.
    /// Stays of a thread end in the reverse order of their beginning.
    class Stay {
    public:
        Stay(Occupancy& newOccupancy, As newRole);
        Stay(const Stay&) = delete;
        Stay& operator=(const Stay&) = delete;
        ~Stay();
        explicit operator bool() const { return entered; }

    private:
        friend class Occupancy;
        struct Reserved {};
        Stay(Occupancy& newOccupancy, Reserved);

        Occupancy& occupancy;
        const As role;
        bool entered;
        Stay* const outer;  // the stay that this thread began before, in whatever object
    };

    Occupancy() = default;
    Occupancy(const Occupancy&) = delete;
    Occupancy& operator=(const Occupancy&) = delete;

    /// Counts a worker whose thread has yet to begin. It begins with reserved(), or is given back.
    void reserve() { counts.fetch_add(kWorker); }
    void giveBack() { leave(As::worker); }
    Stay reserved() { return Stay(*this, Stay::Reserved{}); }

    /// Whether a thread that came now would be let in.
    bool admits(As role) const { return admits(role, counts.load()); }

    /// Waits until no other thread's worker is inside, but no longer than `longest`. True when nobody at all is inside
    /// then: the object may be destroyed, and nobody enters it any more. False when somebody is, this thread included:
    /// the object has to stay, and callers may still come.
    bool close(std::chrono::milliseconds longest);

private:
    // One word, so that "nobody is inside" and "nobody comes any more" are one step.
    static constexpr std::uint64_t kCaller = 1;
    static constexpr std::uint64_t kWorker = std::uint64_t{1} << 31U;
    static constexpr std::uint64_t kClosing = std::uint64_t{1} << 62U;
    static constexpr std::uint64_t kGone = std::uint64_t{1} << 63U;
    static constexpr std::uint64_t kWorkers = kClosing - kWorker;
    static constexpr std::uint64_t kEverybody = kClosing - kCaller;

    bool admits(As role, std::uint64_t seen) const;
    bool enter(As role);
    void leave(As role);
    bool isInside() const;
    std::uint64_t ownWorkers() const;

    std::atomic<std::uint64_t> counts{0};
    std::mutex mutex;
    std::condition_variable left;
};

}  // namespace lo::browserdvbservice
