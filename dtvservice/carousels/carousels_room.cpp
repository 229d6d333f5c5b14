// Handles the command for object carousels.
#include "carousels_room.h"

#include <nlohmann/json.hpp>

#include "service_log.h"

namespace dtvservice {

using broadcast::Channel;
using broadcast::Section;
using nlohmann::json;

CarouselsRoom::CarouselsRoom(Core& newCore, const std::string& folder)
    : core(newCore),
      folders(newCore.loop, folder),
      mounts(newCore.loop, folders, [this](auto line, const std::string& text) { say(line, text); }) {
    core.commands.on.cmdMountDsmcc = calls(*this, &CarouselsRoom::cmdMountDsmcc);
    core.requests.add("status", calls(*this, &CarouselsRoom::describe));
    core.loop.post([this] { folders.removeLeftOvers(); });
}

void CarouselsRoom::cmdMountDsmcc(Browser asker, unsigned int request, unsigned short onid, unsigned short tsid,
                                  unsigned short sid, short componentTag) {
    mounts.add(asker, {onid, tsid, sid, componentTag}, [=](CarouselMounts::Result result, const std::string& path) {
        core.browsers.tell({asker}, &Events::onDsmccMounted, request, onid, tsid, sid, componentTag,
                           static_cast<std::uint16_t>(result), path);
    });
}

json CarouselsRoom::describe(const json&) {
    constexpr std::size_t kMost = 100;
    return {{"mounts", mounts.describe(kMost)}};
}

void CarouselsRoom::pmtArrived(Multiplex& multiplex, std::uint16_t serviceId, const Section&) {
    const si::Pmt* const pmt = multiplex.si.pmtFields(serviceId);
    if (pmt != nullptr && &multiplex == &core.received()) {
        mounts.setOtherPmt(*pmt);
    }
}

void CarouselsRoom::pmtChanged(const Channel& channel, const Section&, bool) {
    follow(channel);
}

void CarouselsRoom::follow(const Channel& channel) {
    if (const si::Pmt* const pmt = core.received().si.pmtFields(channel.serviceId)) {
        mounts.follow(core.received().demux, channel, *pmt,
                      [&si = core.received().si](std::uint16_t serviceId) { return si.pmt(serviceId); });
    } else {
        mounts.rest();
    }
}

void CarouselsRoom::say(CarouselMounts::Line line, const std::string& text) {
    if (core.mayTell(core.received())) {
        if (line == CarouselMounts::Line::warning) {
            BLOG_TAGGED(blog::kUnsupported, "%s\n", text.c_str());
        } else {
            BLOG_TAGGED(blog::kOrdinary, "%s\n", text.c_str());
        }
    }
}

}  // namespace dtvservice
