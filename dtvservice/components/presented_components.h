// PresentedComponents: the components of the presented service, and which of each type is presented.
// Threads: the loop's.   Blocks: never.   Fails: as each operation says.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "si/components.h"

namespace dtvservice {

class PresentedComponents {
public:
    /// Another service's: what was selected is forgotten; the first video and the first audio are presented.
    void begin(std::vector<si::Component> newList);
    /// The same service's: what is selected stays while it is there. True when anything differs.
    bool update(std::vector<si::Component> newList);

    const std::vector<si::Component>& list() const { return components; }
    /// The presented one of a type, or null.
    const si::Component* selected(si::ComponentType type) const;

    /// Presents the first of a type, if none is; false when the service has none.
    bool select(si::ComponentType type);
    void unselect(si::ComponentType type) { pidOf(type).reset(); }
    /// Presents the one of that PID; false when the type has none of it.
    bool selectPid(si::ComponentType type, std::uint32_t pid);

private:
    std::optional<std::uint16_t>& pidOf(si::ComponentType type) { return pids[static_cast<std::size_t>(type)]; }
    const si::Component* first(si::ComponentType type) const;

    std::vector<si::Component> components;
    std::array<std::optional<std::uint16_t>, 3> pids;  // by type
};

}  // namespace dtvservice
