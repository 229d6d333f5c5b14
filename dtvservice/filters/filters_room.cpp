// Handles the commands for section filters and PMT requests.
#include "filters_room.h"

#include <nlohmann/json.hpp>

#include "message_transfer.h"

namespace dtvservice {

using broadcast::Section;
namespace messages = lo::browserdvbservice::messages;

namespace {

constexpr short kDone = 0;
constexpr short kRefused = -1;

}  // namespace

FiltersRoom::FiltersRoom(Core& newCore) : core(newCore), filters(newCore.tap, &newCore.losesSection) {
    core.commands.on.cmdUpdateIPCChannelNames = calls(*this, &FiltersRoom::cmdUpdateIPCChannelNames);
    core.commands.on.cmdFilterOpen = calls(*this, &FiltersRoom::cmdFilterOpen);
    core.commands.on.cmdFilterClose = calls(*this, &FiltersRoom::cmdFilterClose);
    core.commands.on.cmdStartPMTRequest = calls(*this, &FiltersRoom::cmdStartPMTRequest);
    core.commands.on.cmdStopPMTRequest = calls(*this, &FiltersRoom::cmdStopPMTRequest);
    core.commands.on.cmdDataReadFinished = calls(*this, &FiltersRoom::cmdDataReadFinished);
    core.requests.add("status", calls(*this, &FiltersRoom::count));
    core.requests.add("statistics", calls(*this, &FiltersRoom::count));
}

/// The tuner receives only one multiplex, so filters on another one are closed and their browsers notified.
void FiltersRoom::multiplexReceived(Multiplex& multiplex) {
    for (const SectionFilters::Name& ended : filters.follow(multiplex.demux)) {
        core.browsers.tell({ended.first}, &Events::onFilterClosed, ended.second);
    }
}

void FiltersRoom::pmtArrived(Multiplex& multiplex, std::uint16_t serviceId, const Section& section) {
    if (&multiplex == &core.received()) {
        filters.pmtChanged(serviceId, section);
    }
}

void FiltersRoom::cmdUpdateIPCChannelNames(Browser asker, const std::string& sectionDataChannel, const std::string&,
                                           const std::string&) {
    if (filters.setQueue(asker, sectionDataChannel)) {
        return;
    }
    core.refuse<messages::CmdUpdateIPCChannelNames>(asker, "there is no queue of this name");
    if (core.browsers.mayTell(asker)) {
        BLOG_TAGGED(blog::kFailure, "browser %u: there is no queue %s\n", asker, shownName(sectionDataChannel).c_str());
    }
}

void FiltersRoom::cmdFilterOpen(Browser asker, const std::string& session, unsigned int pid,
                                const lo::browserdvbservice::OpenFilterMatchMask_t& matchMask) {
    std::string error;
    const bool opened = filters.open(asker, session, pid, matchMask.mask, matchMask.maskBits, error);
    if (!opened) {
        core.refuse<messages::CmdFilterOpen>(asker, error);
    }
    if (!opened && core.browsers.mayTell(asker)) {
        BLOG_TAGGED(blog::kUnsupported, "filter %s refused: %s\n", shownName(session).c_str(), error.c_str());
    }
    core.browsers.tell({asker}, &Events::onBrowserOpenFilterConf, pid, session, opened ? kDone : kRefused);
    core.browsers.tell({asker}, &Events::onFilterOpened, session, opened ? session : std::string());
}

void FiltersRoom::cmdFilterClose(Browser asker, const std::string& session) {
    const bool closed = filters.close(asker, session);
    core.browsers.tell({asker}, &Events::onBrowserOCloseFilterConf, session, closed ? kDone : kRefused);
    if (closed) {
        core.browsers.tell({asker}, &Events::onFilterClosed, session);
    }
}

void FiltersRoom::cmdStartPMTRequest(Browser asker, const std::string& session, unsigned int serviceId) {
    std::string error;
    if (!filters.openPmt(asker, session, serviceId, error)) {
        core.refuse<messages::CmdStartPMTRequest>(asker, error);
        if (core.browsers.mayTell(asker)) {
            BLOG_TAGGED(blog::kUnsupported, "PMT request %s refused: %s\n", shownName(session).c_str(), error.c_str());
        }
        return;
    }
    const Section known = core.received().si.pmt(static_cast<std::uint16_t>(serviceId));
    if (!known.empty()) {
        filters.sendTo(asker, session, known);
    }
}

void FiltersRoom::cmdStopPMTRequest(Browser asker, const std::string& session) {
    filters.close(asker, session);
}

/// Does nothing: sections are sent only by the queue, so there is no data slot to free.
void FiltersRoom::cmdDataReadFinished(Browser, const std::string&, const std::string&) {}

nlohmann::json FiltersRoom::count(const nlohmann::json&) {
    const SectionFilters::Totals totals = filters.totals();
    return {{"filters", totals.filters}, {"queue_drops", totals.dropped}};
}

}  // namespace dtvservice
