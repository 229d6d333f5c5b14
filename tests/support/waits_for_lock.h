// Checks from outside whether an operation takes a lock.
#pragma once

#include <chrono>
#include <future>
#include <mutex>

/// Whether a call on another thread returns only after the lock was released.
template <typename Mutex, typename Call>
bool waitsForLock(Mutex& mutex, Call call) {
    std::unique_lock<Mutex> held(mutex);
    std::future<void> other = std::async(std::launch::async, call);
    // A call that takes the lock cannot return during this wait, however long it is.
    const bool waited = other.wait_for(std::chrono::milliseconds(100)) == std::future_status::timeout;
    held.unlock();
    other.get();
    return waited;
}

/// Whether another thread can take the lock now.
template <typename Mutex>
bool isFree(Mutex& mutex) {
    return std::async(std::launch::async,
                      [&mutex] { return std::unique_lock<Mutex>(mutex, std::try_to_lock).owns_lock(); })
        .get();
}

/// Whether a future becomes ready. Only a broken build reaches the deadline.
template <typename Value>
bool isReady(const std::future<Value>& future) {
    return future.wait_for(std::chrono::seconds(20)) == std::future_status::ready;
}
