// SdtNames, SdtTable: the service names and the original_network_id of transport streams, from the SDT.
// Threads: one.
// Blocks:  never.
// Fails:   never; a malformed section is ignored.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "channel.h"
#include "sub_table.h"

namespace broadcast {

/// A limit on the memory that a broadcast can use. No real network reaches it.
constexpr std::size_t kMostStreams = 1000;

/// The SDT of one transport stream.
class SdtNames {
public:
    using Names = std::map<std::uint16_t, std::string>;  // by service_id

    /// Whether this is a current SDT section with this table_id, and below kMostSections.
    static bool isSdt(si::Bytes section, std::uint8_t tableId);

    /// The parsed section if it is new; else nothing.
    std::optional<si::Sdt> onSection(si::Bytes section);
    const Names& names() const { return names_; }
    /// Whether no section has arrived.
    bool isEmpty() const { return table.sections().empty(); }

private:
    void add(const si::Sdt& part);

    SubTable table;
    Names names_;
};

/// SDT (actual), by transport_stream_id. The SDT may arrive before the PAT, which says which transport stream is the
/// multiplex's own.
class SdtTable {
public:
    static constexpr std::uint16_t kPid = 0x0011;  // of the SDT (other), too

    /// `own` is the multiplex's transport_stream_id. True if networks or names may have changed.
    bool onSection(si::Bytes section, std::optional<std::uint16_t> own);
    /// Takes a stream's network from the NIT or EIT if it is still unknown. True if it was.
    bool learnNetwork(std::uint16_t transportStream, std::uint16_t networkId, std::optional<std::uint16_t> own);
    /// Sets the channel's network and name as far as they are known.
    void describe(Channel& channel) const;

private:
    struct Stream {
        SdtNames names;
        std::optional<std::uint16_t> originalNetworkId;
    };
    Stream* streamOf(std::uint16_t transportStream, std::optional<std::uint16_t> own);

    std::map<std::uint16_t, Stream> streams;
};

}  // namespace broadcast
