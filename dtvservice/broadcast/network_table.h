// NetworkTable: the transport streams of the network with their delivery systems and services, from the NIT (actual)
// and the SDT (other).
// Threads: one.
// Blocks:  never.
// Fails:   never; a malformed section is ignored.
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

    /// The parsed NIT section if it is new; else nothing.
    std::optional<si::Nit> onNitSection(si::Bytes section);
    void onSdtSection(si::Bytes section);

    /// Services of all transport streams but the multiplex's own, in the order of network, transport stream and
    /// service.
    std::vector<Channel> otherChannels(std::optional<std::uint16_t> own) const;
    /// Whether otherChannels(), of any multiplex's own, has the service.
    bool lists(std::uint32_t networkId, std::uint32_t transportStream, std::uint32_t serviceId) const;
    /// Whether the NIT has a descriptor with exactly these bytes, tag and length included, for the channel's transport
    /// stream. A channel whose network is still unknown matches any network.
    bool hasDeliverySystem(const Channel& channel, const std::string& descriptor) const;

private:
    struct Stream {
        SdtNames sdt;
        si::Descriptors descriptors;     // in the NIT
        std::set<std::uint16_t> listed;  // service_ids in the NIT's service lists
    };

    Stream* streamOf(std::uint16_t networkId, std::uint16_t transportStream);
    void add(const si::Nit::TransportStream& stream);
    void add(const si::Nit& part);
    void renew();

    SubTable nit;
    std::map<std::pair<std::uint16_t, std::uint16_t>, Stream> streams;  // by network and transport stream
};

}  // namespace broadcast
