// EventLoop: the one thread on which the service thinks. Packets are played on it, and everything that comes from other
// threads is posted to it, so that the service's own state needs no lock.
// Threads: post(), postAt() and stop() from any; the rest on the loop's thread.
// Blocks:  runUntil() until its time, running what is posted meanwhile.
// Locks:   mutex guards tasks and the stop mark; no task runs while it is held.
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
    /// Runs the task when the time has come, or later.
    void postAt(Clock::time_point time, Task task);
    /// Lets every runUntil() return false from now on.
    void stop();
    /// Runs posted tasks until the time has come; false once stopped.
    bool runUntil(Clock::time_point time);

private:
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Task> tasks;                          // guarded by mutex
    std::multimap<Clock::time_point, Task> delayed;  // guarded by mutex
    bool stopped = false;                            // guarded by mutex
};

}  // namespace dtvservice
