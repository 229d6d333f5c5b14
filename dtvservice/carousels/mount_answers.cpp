// The mounts in the answers to the operator.
#include <algorithm>
#include <nlohmann/json.hpp>

#include "carousel_mounts.h"

namespace dtvservice {

using nlohmann::json;

namespace {

void addProgress(const si::ObjectCarousel& carousel, json& mount) {
    const std::vector<si::ObjectCarousel::ModuleState> modules = carousel.modules();
    mount["modules"] = modules.size();
    mount["modules_arrived"] = std::count_if(modules.begin(), modules.end(),
                                             [](const auto& module) { return module.blocksHere == module.blocks; });
}

}  // namespace

json CarouselMounts::describe(std::size_t most) const {
    json described = json::array();
    for (const Mount& mount : mounts) {
        if (described.size() == most) {
            break;
        }
        json one = {{"browser", mount.browser}, {"sid", mount.target.sid}, {"versions", 0}};
        if (mount.target.componentTag >= 0) {
            one["component_tag"] = mount.target.componentTag;
        }
        if (mount.pid) {
            one["pid"] = *mount.pid;
            const auto carousel = carousels->carousels().find(*mount.pid);
            if (carousel != carousels->carousels().end()) {
                addProgress(carousel->second, one);
            }
            const auto folder = shown.find(*mount.pid);
            if (folder != shown.end() && !folder->second.path.empty()) {
                one["path"] = folder->second.path;
                one["versions"] = folder->second.versions;
            }
        }
        described.push_back(std::move(one));
    }
    return described;
}

}  // namespace dtvservice
