// FiltersRoom: browsers' commands for section filters and PMT requests.
// Threads: the loop's.
// Blocks:  never.
// Fails:   a filter that cannot be opened is logged, and the browser gets a negative answer.
#pragma once

#include "core.h"
#include "section_filters.h"

namespace dtvservice {

class FiltersRoom : public Room {
public:
    explicit FiltersRoom(Core& newCore);

    void multiplexReceived(Multiplex& multiplex) override;
    void pmtArrived(Multiplex& multiplex, std::uint16_t serviceId, const broadcast::Section& section) override;
    void browserGone(Browser browser) override { filters.forget(browser); }

private:
    void cmdUpdateIPCChannelNames(Browser asker, const std::string& sectionDataChannel,
                                  const std::string& unusedChannel, const std::string& secondChannel);
    void cmdFilterOpen(Browser asker, const std::string& session, unsigned int pid,
                       const lo::browserdvbservice::OpenFilterMatchMask_t& matchMask);
    void cmdFilterClose(Browser asker, const std::string& session);
    void cmdStartPMTRequest(Browser asker, const std::string& session, unsigned int serviceId);
    void cmdStopPMTRequest(Browser asker, const std::string& session);
    void cmdDataReadFinished(Browser asker, const std::string& session, const std::string& dataSlot);
    nlohmann::json count(const nlohmann::json& request);

    Core& core;
    SectionFilters filters;
};

}  // namespace dtvservice
