// Backlog: the records that wait for their reader, as the bytes of a pcapng file. What does not fit is lost, and the
// reader is told how much.
// Threads: one at a time.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <cstdint>
#include <string>

#include "bus/record.h"

namespace bus {

class Backlog {
public:
    /// The bytes that wait at most: some seconds of a busy service.
    static constexpr std::size_t kMost = std::size_t{4} << 20U;

    /// Of what that side sees.
    explicit Backlog(Side newSide = Side::service);

    /// A block of pcapngBlock(). Behind the first lost record all are lost until the reader takes what there is, so
    /// that the loss is at one place.
    void add(const std::string& block);
    bool isEmpty() const { return bytes.empty() && lost == 0; }
    /// All bytes since the last call; at first the start of a file.
    std::string take();

private:
    Side side;
    std::string bytes;
    std::uint32_t lost = 0;
};

}  // namespace bus
