// HeldBytes: a share in a sum of bytes, as long as it exists. Trees that a caller keeps may end on another thread, so
// the sum is atomic.
#pragma once

#include <utility>

#include "si/carousel.h"

namespace si {

class HeldBytes {
public:
    explicit HeldBytes(ByteSum newSum) : sum(std::move(newSum)) {}
    HeldBytes(HeldBytes&& other) noexcept : sum(std::move(other.sum)), count(std::exchange(other.count, 0)) {}
    HeldBytes(const HeldBytes&) = delete;
    HeldBytes& operator=(const HeldBytes&) = delete;
    HeldBytes& operator=(HeldBytes&&) = delete;
    ~HeldBytes() { set(0); }

    void set(std::size_t newCount) {
        if (sum) {
            *sum += newCount - count;  // the sum wraps like the difference
            count = newCount;
        }
    }

private:
    ByteSum sum;
    std::size_t count = 0;
};

}  // namespace si
