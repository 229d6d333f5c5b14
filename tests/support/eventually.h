// Waits for a condition. Only a broken build reaches the deadline.
#pragma once

#include <chrono>
#include <thread>

template <typename Condition>
bool eventually(Condition condition, std::chrono::milliseconds longest = std::chrono::seconds(20)) {
    const auto end = std::chrono::steady_clock::now() + longest;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));  // pause between two checks; the condition decides
    }
    return true;
}
