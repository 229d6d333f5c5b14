// CarouselsRoom: browsers' command to mount an object carousel of the presented service.
// Threads: the loop's.
// Blocks:  only the destructor, until the folders are removed.
// Fails:   the answer says why a carousel is not mounted.
#pragma once

#include "carousel_mounts.h"
#include "core.h"

namespace dtvservice {

class CarouselsRoom : public Room {
public:
    /// `folder`: for the mounted carousels. What a killed service has left there is removed when the loop runs, because
    /// only then it is sure that no other service runs.
    CarouselsRoom(Core& newCore, const std::string& folder);

    void servicePresented(const broadcast::Channel& channel) override { follow(channel); }
    void serviceGone() override { mounts.rest(); }
    void pmtArrived(Multiplex& multiplex, std::uint16_t serviceId, const broadcast::Section& section) override;
    void pmtChanged(const broadcast::Channel& channel, const broadcast::Section& section, bool changed) override;
    void browserGone(Browser browser) override { mounts.forget(browser); }

private:
    void cmdMountDsmcc(Browser asker, unsigned int request, unsigned short onid, unsigned short tsid,
                       unsigned short sid, short componentTag);
    nlohmann::json describe(const nlohmann::json& request);
    void follow(const broadcast::Channel& channel);
    void say(CarouselMounts::Line line, const std::string& text);

    Core& core;
    TreeFolders folders;
    CarouselMounts mounts;
};

}  // namespace dtvservice
