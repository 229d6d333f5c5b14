// OsdRoom: layers of the on-screen display, which the operator shows and browsers follow.
// Threads: the loop's.   Blocks: never.   Fails: a browser that follows too many layers is told of in the log.
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
    std::set<unsigned int> layers;  // those that are shown
};

}  // namespace dtvservice
