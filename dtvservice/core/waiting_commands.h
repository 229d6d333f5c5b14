// WaitingCommands: the commands that wait for the loop, in one queue per browser. The loop runs one command of each
// browser in turn, so a browser that sends many does not delay the others by more than one command each.
// Threads: add() and addNotice() from any; the tasks run on the loop's.
// Blocks:  never.
// Locks:   mutex guards the queues; it is not held while a task runs.
// Fails:   add() refuses a command above the limits.
#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <mutex>

#include "browsers.h"
#include "event_loop.h"
#include "locks/lock.h"

namespace dtvservice {

class WaitingCommands {
public:
    /// Limits per browser. The loop is never so far behind a browser that waits for its answers.
    static constexpr std::size_t kMostCommands = 1000;
    static constexpr std::size_t kMostBytes = std::size_t{4} * 1024 * 1024;

    /// The loop must outlive this object, and run no task after this object ends.
    explicit WaitingCommands(EventLoop& newLoop) : loop(newLoop) {}
    WaitingCommands(const WaitingCommands&) = delete;
    WaitingCommands& operator=(const WaitingCommands&) = delete;

    /// Runs the task after the browser's earlier ones. False if too many wait, or too many bytes of their values.
    bool add(Browser browser, EventLoop::Task task, std::size_t bytes);
    /// The same without a limit, for what must not be lost.
    void addNotice(Browser browser, EventLoop::Task task);

private:
    struct Waiting {
        EventLoop::Task task;
        std::size_t bytes;
    };
    /// Exists as long as the browser has its turn in the loop.
    struct Queue {
        std::deque<Waiting> tasks;
        std::size_t bytes = 0;
    };

    bool add(Browser browser, Waiting added, bool isLimited) EXCLUDES(mutex);
    void postTurn(Browser browser) EXCLUDES(mutex);
    void runOne(Browser browser) EXCLUDES(mutex);

    EventLoop& loop;
    std::mutex mutex;
    std::map<Browser, Queue> queues GUARDED_BY(mutex);
};

}  // namespace dtvservice
