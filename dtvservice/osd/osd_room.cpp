// Shows layers for the operator and notifies the browsers that follow them.
#include "osd_room.h"

#include "message_transfer.h"
#include "request_values.h"

namespace dtvservice {

using nlohmann::json;

OsdRoom::OsdRoom(Core& newCore) : core(newCore) {
    core.commands.on.cmdStartOSDDetection = calls(*this, &OsdRoom::cmdStartOSDDetection);
    core.commands.on.cmdStopOSDDetection = calls(*this, &OsdRoom::cmdStopOSDDetection);
    core.requests.add("osd", calls(*this, &OsdRoom::show));
    core.requests.add("status", calls(*this, &OsdRoom::describe));
}

void OsdRoom::cmdStartOSDDetection(Browser asker, unsigned int layer) {
    if (!followers.add(asker, layer)) {
        core.refuse<lo::browserdvbservice::messages::CmdStartOSDDetection>(
            asker, "it follows " + std::to_string(OsdFollowers::kMostLayers) + " other layers");
        if (core.browsers.mayTell(asker)) {
            BLOG_TAGGED(blog::kUnsupported, "browser %u: layer %u refused: it follows %zu others\n", asker, layer,
                        OsdFollowers::kMostLayers);
        }
        return;
    }
    core.browsers.tell({asker}, &Events::onOSDStateChanged, layer, layers.count(layer) != 0 ? 1 : 0);
}

void OsdRoom::cmdStopOSDDetection(Browser asker, unsigned int layer) {
    followers.remove(asker, layer);
}

json OsdRoom::show(const json& request) {
    const auto layer = getNumber<std::uint32_t>(request, "layer");
    const bool on = get<bool>(request, "on");
    const bool changed = on ? layers.insert(layer).second : layers.erase(layer) != 0;
    if (changed) {
        core.browsers.tell(followers.followersOf(layer), &Events::onOSDStateChanged, layer, on ? 1 : 0);
    }
    return {{"changed", changed}};
}

json OsdRoom::describe(const json&) {
    return {{"osd_layers", layers}};
}

}  // namespace dtvservice
