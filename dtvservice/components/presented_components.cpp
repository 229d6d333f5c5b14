// Selects components.
#include "presented_components.h"

#include <algorithm>

namespace dtvservice {

using si::Component;
using si::ComponentType;

void PresentedComponents::begin(std::vector<Component> newList) {
    components = std::move(newList);
    pids = {};
    select(ComponentType::video);
    select(ComponentType::audio);
}

/// If a selected component is gone, the first one of its type is selected.
bool PresentedComponents::update(std::vector<Component> newList) {
    if (newList == components) {
        return false;
    }
    components = std::move(newList);
    for (const ComponentType type : {ComponentType::video, ComponentType::audio, ComponentType::subtitle}) {
        if (pidOf(type) && selected(type) == nullptr) {
            unselect(type);
            select(type);
        }
    }
    return true;
}

const Component* PresentedComponents::selected(ComponentType type) const {
    const std::optional<std::uint16_t> pid = pids[static_cast<std::size_t>(type)];
    const auto found = std::find_if(components.begin(), components.end(), [&](const Component& component) {
        return component.type == type && pid == component.pid;
    });
    return found == components.end() ? nullptr : &*found;
}

const Component* PresentedComponents::first(ComponentType type) const {
    const auto found = std::find_if(components.begin(), components.end(),
                                    [type](const Component& component) { return component.type == type; });
    return found == components.end() ? nullptr : &*found;
}

bool PresentedComponents::select(ComponentType type) {
    const Component* const found = first(type);
    if (found != nullptr && selected(type) == nullptr) {
        pidOf(type) = found->pid;
    }
    return found != nullptr;
}

bool PresentedComponents::selectPid(ComponentType type, std::uint32_t pid) {
    for (const Component& component : components) {
        if (component.type == type && component.pid == pid) {
            pidOf(type) = component.pid;
            return true;
        }
    }
    return false;
}

}  // namespace dtvservice
