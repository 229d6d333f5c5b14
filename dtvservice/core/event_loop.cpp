// Running tasks and waiting for time.
#include "event_loop.h"

#include <algorithm>

namespace dtvservice {

void EventLoop::post(Task task) {
    {
        const locks::Lock lock(mutex);
        tasks.push_back(std::move(task));
    }
    changed.notify_one();
}

void EventLoop::postAt(Clock::time_point time, Task task) {
    {
        const locks::Lock lock(mutex);
        delayed.emplace(time, std::move(task));
    }
    changed.notify_one();
}

void EventLoop::stop() {
    {
        const locks::Lock lock(mutex);
        stopped = true;
    }
    changed.notify_all();
}

void EventLoop::run() {
    constexpr std::chrono::hours kLongTime{1};
    while (runUntil(Clock::now() + kLongTime)) {
    }
}

bool EventLoop::runUntil(Clock::time_point time, std::size_t mostLate) {
    locks::Lock lock(mutex);
    std::size_t late = 0;
    while (!stopped) {
        while (!delayed.empty() && delayed.begin()->first <= Clock::now()) {
            tasks.push_back(std::move(delayed.begin()->second));
            delayed.erase(delayed.begin());
        }
        const bool isLate = Clock::now() >= time;
        if (!tasks.empty() && !(isLate && late == mostLate)) {
            late += isLate ? 1 : 0;
            const Task task = std::move(tasks.front());
            tasks.pop_front();
            lock.unlock();
            task();
            lock.lock();
        } else if (isLate) {
            return true;
        } else {
            changed.wait_until(lock.forWaiting(), delayed.empty() ? time : std::min(time, delayed.begin()->first));
        }
    }
    return false;
}

void EventLoop::freezeUntil(Clock::time_point time) {
    locks::Lock lock(mutex);
    while (!stopped && Clock::now() < time) {
        changed.wait_until(lock.forWaiting(), time);
    }
}

}  // namespace dtvservice
