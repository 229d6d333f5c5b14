// NetworkTable: the transport streams of the network, by NIT (actual) and SDT (other): how they are received, and which
// services they have.
// Threads: one.
// Blocks: never.
// Fails: never; a section that cannot be read is passed over.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "channel.h"
#include "sdt_table.h"
#include "sub_table.h"

namespace broadcast {

class NetworkTable {
public:
    static constexpr std::uint16_t kPid = 0x0010;  // of the NIT

    /// What a section of the NIT says, if it is new.
    std::optional<si::Nit> onNitSection(si::Bytes section);
    void onSdtSection(si::Bytes section);

    /// Services of other transport streams than the multiplex's own, by network, transport stream and service.
    std::vector<Channel> otherChannels(std::optional<std::uint16_t> own) const;
    /// Whether the NIT gives the channel's transport stream a descriptor of exactly these bytes, tag and length
    /// included. A network that nothing has told yet is any.
    bool hasDeliverySystem(const Channel& channel, const std::string& descriptor) const;

private:
    struct Stream {
        SdtNames sdt;
        si::Descriptors descriptors;     // of the NIT
        std::set<std::uint16_t> listed;  // by service_id, in the NIT's service lists
    };

    Stream* streamOf(std::uint16_t networkId, std::uint16_t transportStream);
    void add(const si::Nit::TransportStream& stream);
    void add(const si::Nit& part);
    void renew();

    SubTable nit;
    std::map<std::pair<std::uint16_t, std::uint16_t>, Stream> streams;  // by network and transport stream
};

}  // namespace broadcast
