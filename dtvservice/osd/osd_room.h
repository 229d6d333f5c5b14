// OsdRoom: the layers of the on-screen display. The operator shows and hides them; browsers that follow a layer are
// notified.
// Threads: the loop's.
// Blocks:  never.
// Fails:   a layer that exceeds a browser's limit is refused in the log.
#pragma once

#include "core.h"
#include "osd_followers.h"

namespace dtvservice {

class OsdRoom : public Room {
public:
    explicit OsdRoom(Core& newCore);

    void browserGone(Browser browser) override { followers.forget(browser); }

private:
    void cmdStartOSDDetection(Browser asker, unsigned int layer);
    void cmdStopOSDDetection(Browser asker, unsigned int layer);
    nlohmann::json show(const nlohmann::json& request);
    nlohmann::json describe(const nlohmann::json& request);

    Core& core;
    OsdFollowers followers;
    std::set<unsigned int> layers;  // the layers that are shown
};

}  // namespace dtvservice
