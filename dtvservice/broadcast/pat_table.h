// PatTable: the services that the PAT lists, with the PIDs of their PMTs.
// Threads: one.
// Blocks:  never.
// Fails:   never; a malformed section is ignored.
#pragma once

#include <optional>
#include <vector>

#include "channel.h"
#include "sub_table.h"

namespace broadcast {

class PatTable {
public:
    static constexpr std::uint16_t kPid = 0x0000;

    /// The effect of a section: none, a repetition of a known section, or a new complete list.
    enum class Outcome { none, repetition, list };

    Outcome onSection(si::Bytes section);
    /// The services in the order of the last complete PAT, without network and name. At most kMostServices.
    const std::vector<Channel>& channels() const { return channels_; }
    /// The services that it lists beyond them.
    std::size_t passedOver() const { return passedOver_; }
    std::optional<std::uint16_t> transportStreamId() const { return transportStreamId_; }
    std::uint64_t repetitions() const { return repetitions_; }

private:
    void readList();

    SubTable table;
    std::vector<Channel> channels_;
    std::size_t passedOver_ = 0;
    std::optional<std::uint16_t> transportStreamId_;
    std::uint64_t repetitions_ = 0;
};

}  // namespace broadcast
