// ChannelList: the channels that PAT, SDT (actual and other) and NIT (actual) name, of all transport streams that were
// presented or that these tables name, in the order in which the streams became known.
// Threads: one.
// Blocks:  never.
// Fails:   bad sections are left out; what no table says is empty, and an unknown network is 65535.
#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "si/tables.h"
#include "table_sections.h"
#include "values.h"

namespace tvbrowser {

class ChannelList {
public:
    static constexpr std::size_t kMostTables = 1000;
    static constexpr std::size_t kMostChannels = 10000;

    void add(si::Bytes section);
    /// The network of a transport stream that is presented.
    void addNetwork(std::uint16_t transportStream, std::uint16_t network);
    /// The sections that follow may be of another broadcast. If their PAT names an unknown transport stream, what was
    /// known before is forgotten.
    void startAgain() { mayBeAnother = true; }
    /// Makes value() what the tables say now. Whether that changed it.
    bool renew();
    const json& value() const { return list; }

private:
    using Key = std::pair<std::uint16_t, std::uint16_t>;  // network and transport stream

    /// What the tables say of one transport stream.
    struct Stream {
        const TableSections<si::Pat>* pat = nullptr;
        const TableSections<si::Sdt>* sdt = nullptr;
        const si::Nit::TransportStream* inNit = nullptr;
        std::uint16_t networkId = 0;  ///< of the NIT
    };

    void addPat(si::Bytes section);
    void addSdt(si::Bytes section);
    void addNit(si::Bytes section);
    std::uint16_t networkOf(std::uint16_t transportStream) const;
    /// Also puts new ones behind those of before in `order`.
    std::map<Key, Stream> streams();
    static void appendChannels(const Key& key, const Stream& stream, json& channels);

    std::map<std::uint16_t, TableSections<si::Pat>> pats;  // by transport stream
    std::map<Key, TableSections<si::Sdt>> sdts;
    std::map<std::uint16_t, TableSections<si::Nit>> nits;  // by network_id
    std::map<std::uint16_t, std::uint16_t> networks;       // by transport stream
    std::vector<Key> order;
    bool mayBeAnother = false;
    json list = json::array();
};

}  // namespace tvbrowser
