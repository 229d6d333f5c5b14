// PatTable: the services that the PAT lists, with the PIDs of their PMTs.
// Threads: one.
// Blocks: never.
// Fails: never; a section that cannot be read is passed over.
#pragma once

#include <optional>
#include <vector>

#include "channel.h"
#include "sub_table.h"

namespace broadcast {

class PatTable {
public:
    static constexpr std::uint16_t kPid = 0x0000;

    /// What a section has brought: nothing to act on yet, the same again, or a list that is whole.
    enum class Outcome { none, repetition, list };

    Outcome onSection(si::Bytes section);
    /// The services in the order of the last whole PAT, without network and name.
    const std::vector<Channel>& channels() const { return channels_; }
    std::optional<std::uint16_t> transportStreamId() const { return transportStreamId_; }
    std::uint64_t repetitions() const { return repetitions_; }

private:
    void readList();

    SubTable table;
    std::vector<Channel> channels_;
    std::optional<std::uint16_t> transportStreamId_;
    std::uint64_t repetitions_ = 0;
};

}  // namespace broadcast
