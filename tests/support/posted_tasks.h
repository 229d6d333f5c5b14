// PostedTasks: tasks that are posted on any thread, for a test that runs them itself, in their order.
#pragma once

#include <deque>
#include <functional>
#include <mutex>
#include <utility>

#include "locks/lock.h"

class PostedTasks {
public:
    void post(std::function<void()> task) {
        const locks::Lock lock(mutex);
        tasks.push_back(std::move(task));
    }
    /// Runs what has been posted, and what that posts.
    void run() {
        for (std::function<void()> task = next(); task; task = next()) {
            task();
        }
    }

private:
    std::function<void()> next() {
        const locks::Lock lock(mutex);
        if (tasks.empty()) {
            return nullptr;
        }
        std::function<void()> first = std::move(tasks.front());
        tasks.pop_front();
        return first;
    }

    std::mutex mutex;
    std::deque<std::function<void()>> tasks GUARDED_BY(mutex);
};
