// Waiting for a condition, with a deadline that only a broken build meets.
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
        std::this_thread::sleep_for(std::chrono::milliseconds(2));  // between two looks; the condition decides
    }
    return true;
}
