// EventLoop: runs all of the service's work on one thread. Packets are played on this thread, and other threads post
// their work to it, so the service's state needs no lock.
// Threads: post(), postAt() and stop() from any thread; run() and runUntil() on the loop's thread.
// Blocks:  run() until the loop is stopped, runUntil() until the given time: they run posted tasks meanwhile.
//          freezeUntil() likewise, and runs none.
// Locks:   mutex guards the tasks and the stop flag; it is not held while a task runs.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <limits>
#include <map>
#include <mutex>

#include "locks/lock.h"

namespace dtvservice {

class EventLoop {
public:
    using Clock = std::chrono::steady_clock;
    using Task = std::function<void()>;

    void post(Task task) EXCLUDES(mutex);
    /// Runs the task at the given time or later.
    void postAt(Clock::time_point time, Task task) EXCLUDES(mutex);
    /// From now on run() returns, and every runUntil() returns false.
    void stop() EXCLUDES(mutex);
    /// Runs posted tasks until the loop is stopped.
    void run() EXCLUDES(mutex);
    /// Runs posted tasks until the given time, and further ones that are there then: all, or at most `mostLate`. False
    /// once the loop is stopped.
    bool runUntil(Clock::time_point time, std::size_t mostLate = std::numeric_limits<std::size_t>::max())
        EXCLUDES(mutex);
    /// Runs nothing until the given time, or until the loop is stopped. Call this from a task.
    void freezeUntil(Clock::time_point time) EXCLUDES(mutex);

private:
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Task> tasks GUARDED_BY(mutex);
    std::multimap<Clock::time_point, Task> delayed GUARDED_BY(mutex);
    bool stopped GUARDED_BY(mutex) = false;
};

}  // namespace dtvservice
