// EventLoop: runs all of the service's work on one thread. Packets are played on this thread, and other threads post
// their work to it, so the service's state needs no lock.
// Threads: post(), postAt() and stop() from any thread; runUntil() on the loop's thread.
// Blocks:  runUntil() until the given time; it runs posted tasks meanwhile.
// Locks:   mutex guards the tasks and the stop flag; it is not held while a task runs.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>

namespace dtvservice {

class EventLoop {
public:
    using Clock = std::chrono::steady_clock;
    using Task = std::function<void()>;

    void post(Task task);
    /// Runs the task at the given time or later.
    void postAt(Clock::time_point time, Task task);
    /// From now on every runUntil() returns false.
    void stop();
    /// Runs posted tasks until the given time; false once the loop is stopped.
    bool runUntil(Clock::time_point time);

private:
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Task> tasks;                          // guarded by mutex
    std::multimap<Clock::time_point, Task> delayed;  // guarded by mutex
    bool stopped = false;                            // guarded by mutex
};

}  // namespace dtvservice
