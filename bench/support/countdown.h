// Countdown: one thread waits until another has counted to an end.
#pragma once

#include <condition_variable>
#include <mutex>

namespace bench {

class Countdown {
public:
    /// By the thread that counts.
    void end() {
        {
            const std::lock_guard<std::mutex> lock(mutex);
            ended = true;
        }
        changed.notify_one();
    }
    /// By the thread that waits; afterwards all begins anew.
    void wait() {
        std::unique_lock<std::mutex> lock(mutex);
        changed.wait(lock, [this] { return ended; });
        ended = false;
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    bool ended = false;
};

}  // namespace bench
