// ComponentsRoom: the components of the presented service, and browsers' commands to select them.
// Threads: the loop's.
// Blocks:  never.
// Fails:   a command for a missing component is logged.
#pragma once

#include "core.h"
#include "presented_components.h"

namespace dtvservice {

class ComponentsRoom : public Room {
public:
    explicit ComponentsRoom(Core& newCore);

    void servicePresented(const broadcast::Channel& channel) override;
    void pmtChanged(const broadcast::Channel& channel, const broadcast::Section& section, bool changed) override;
    void eitChanged(const broadcast::Channel& channel, const broadcast::Section& section, bool changed) override;
    void tell(Part part, const broadcast::Channel& channel, const Audience& to) override;

private:
    void cmdTuneToComponent(Browser asker, const lo::browserdvbservice::TuneInfoComponent& component);
    void cmdSelectComponent(Browser asker, lo::browserdvbservice::ComponentType wanted);
    void cmdUnselectComponent(Browser asker, lo::browserdvbservice::ComponentType wanted);
    std::optional<std::vector<si::Component>> listOf(const broadcast::Channel& channel) const;
    void update(const broadcast::Channel& channel);
    void tellAll(const Audience& to);
    void tellSelected(si::ComponentType type, const Audience& to);

    Core& core;
    PresentedComponents shown;
};

}  // namespace dtvservice
