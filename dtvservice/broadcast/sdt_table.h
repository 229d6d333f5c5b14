// SdtNames, SdtTable: what SDTs say of transport streams: the names of their services, and the network they come from.
// Threads: one.
// Blocks: never.
// Fails: never; a section that cannot be read is passed over.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "channel.h"
#include "sub_table.h"

namespace broadcast {

/// A broadcast may not make this process keep more than any network has.
constexpr std::size_t kMostStreams = 1000;
constexpr std::size_t kMostServices = 1000;  // of a stream

/// The SDT of one transport stream.
class SdtNames {
public:
    using Names = std::map<std::uint16_t, std::string>;  // by service_id

    /// Whether it is an SDT's section, with that table_id and a section number that any network has.
    static bool isSdt(si::Bytes section, std::uint8_t tableId);

    /// What the section says, if it is new.
    std::optional<si::Sdt> onSection(si::Bytes section);
    const Names& names() const { return names_; }
    /// No section has come.
    bool isEmpty() const { return table.sections().empty(); }

private:
    void add(const si::Sdt& part);

    SubTable table;
    Names names_;
};

/// SDT (actual), by transport_stream_id: it may come before the PAT that says which one is the multiplex's own.
class SdtTable {
public:
    static constexpr std::uint16_t kPid = 0x0011;  // SDT (other) as well

    /// `own` is the multiplex's transport_stream_id. True when something may be known that was not.
    bool onSection(si::Bytes section, std::optional<std::uint16_t> own);
    /// NIT and EIT tell the network of a stream, too: they count where nothing has told it yet. True when this does.
    bool learnNetwork(std::uint16_t transportStream, std::uint16_t networkId, std::optional<std::uint16_t> own);
    /// Gives the channel its network and name, as far as they are known.
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
