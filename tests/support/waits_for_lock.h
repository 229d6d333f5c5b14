// Whether an operation takes a lock, seen from outside.
#pragma once

#include <chrono>
#include <future>
#include <mutex>

/// Whether a call on another thread comes to its end only after the lock was let go.
template <typename Mutex, typename Call>
bool waitsForLock(Mutex& mutex, Call call) {
    std::unique_lock<Mutex> held(mutex);
    std::future<void> other = std::async(std::launch::async, call);
    // A call that takes the lock can't end here, however long this is.
    const bool waited = other.wait_for(std::chrono::milliseconds(100)) == std::future_status::timeout;
    held.unlock();
    other.get();
    return waited;
}

/// Whether another thread can take the lock at this moment.
template <typename Mutex>
bool isFree(Mutex& mutex) {
    return std::async(std::launch::async,
                      [&mutex] { return std::unique_lock<Mutex>(mutex, std::try_to_lock).owns_lock(); })
        .get();
}

/// Whether a future is there; only a broken build meets the deadline.
template <typename Value>
bool isReady(const std::future<Value>& future) {
    return future.wait_for(std::chrono::seconds(20)) == std::future_status::ready;
}
