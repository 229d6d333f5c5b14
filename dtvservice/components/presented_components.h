// PresentedComponents: the components of the presented service, and the selected component of each type.
// Threads: the loop's.
// Blocks:  never.
// Fails:   as each operation says.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "si/components.h"

namespace dtvservice {

class PresentedComponents {
public:
    /// Starts with the components of a service: selects the first video and the first audio.
    void begin(std::vector<si::Component> newList);
    /// Takes a new list of the same service. Selected components stay selected while they exist. True if the list has
    /// changed.
    bool update(std::vector<si::Component> newList);

    const std::vector<si::Component>& list() const { return components; }
    /// The selected component of a type, or null.
    const si::Component* selected(si::ComponentType type) const;

    /// Selects the first component of a type, unless one is selected. False if the service has none.
    bool select(si::ComponentType type);
    void unselect(si::ComponentType type) { pidOf(type).reset(); }
    /// Selects the component of this type on this PID. False if there is none.
    bool selectPid(si::ComponentType type, std::uint32_t pid);

private:
    std::optional<std::uint16_t>& pidOf(si::ComponentType type) { return pids[static_cast<std::size_t>(type)]; }
    const si::Component* first(si::ComponentType type) const;

    std::vector<si::Component> components;
    std::array<std::optional<std::uint16_t>, 3> pids;  // by type
};

}  // namespace dtvservice
