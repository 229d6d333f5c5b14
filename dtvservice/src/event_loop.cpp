// Running tasks and waiting for time.
#include "event_loop.h"

namespace dtvservice {

void EventLoop::post(Task task) {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        tasks.push_back(std::move(task));
    }
    changed.notify_one();
}

void EventLoop::stop() {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        stopped = true;
    }
    changed.notify_all();
}

bool EventLoop::runUntil(Clock::time_point time) {
    std::unique_lock<std::mutex> lock(mutex);
    while (!stopped) {
        if (!tasks.empty()) {
            const Task task = std::move(tasks.front());
            tasks.pop_front();
            lock.unlock();
            task();
            lock.lock();
        } else if (Clock::now() >= time) {
            return true;
        } else {
            changed.wait_until(lock, time);
        }
    }
    return false;
}

}  // namespace dtvservice
