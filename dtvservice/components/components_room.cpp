// Selects components and tells browsers of them.
#include "components_room.h"

namespace dtvservice {

using broadcast::Channel;
using broadcast::Section;
using lo::browserdvbservice::ComponentType;
using lo::browserdvbservice::TuneInfoComponent;

namespace {

constexpr std::uint32_t kNoIndex = 0xFFFFFFFF;
constexpr std::uint16_t kNoTag = 0xFFFF;
constexpr std::uint32_t kTypes = 3;

std::uint16_t tagOf(const si::Component& component) {
    if (!component.tag) {
        return kNoTag;
    }
    return *component.tag;
}

/// The three letters of a language in the low 24 bits, the first one on top; 0 for no language.
std::uint32_t languageCode(const std::string& language) {
    std::uint32_t code = 0;
    for (const char letter : language) {
        code = code << 8U | static_cast<std::uint8_t>(letter);
    }
    return code;
}

/// The descriptors of the present event, which describe components.
si::Descriptors presentEvent(const std::vector<Section>& eit) {
    const bool hasPresent = !eit.empty() && si::sectionNumber(eit[0]) == 0;
    return hasPresent ? si::firstEventDescriptors(eit[0]) : si::Descriptors();
}

}  // namespace

ComponentsRoom::ComponentsRoom(Core& newCore) : core(newCore) {
    core.commands.on.cmdTuneToComponent = calls(*this, &ComponentsRoom::cmdTuneToComponent);
    core.commands.on.cmdSelectComponent = calls(*this, &ComponentsRoom::cmdSelectComponent);
    core.commands.on.cmdUnselectComponent = calls(*this, &ComponentsRoom::cmdUnselectComponent);
}

void ComponentsRoom::cmdTuneToComponent(Browser asker, const TuneInfoComponent& component) {
    const std::uint32_t type = component.first;
    const std::uint32_t pid = component.second;
    if (type >= kTypes || !shown.selectPid(static_cast<si::ComponentType>(type), pid)) {
        if (core.browsers.mayTell(asker)) {
            BLOG_TAGGED(blog::kUnsupported, "no component of type %u on PID %u\n", type, pid);
        }
        return;
    }
    tellSelected(static_cast<si::ComponentType>(type), core.browsers.all());
}

void ComponentsRoom::cmdSelectComponent(Browser asker, ComponentType wanted) {
    const auto type = static_cast<std::uint32_t>(wanted);
    if (type >= kTypes || !shown.select(static_cast<si::ComponentType>(type))) {
        if (core.browsers.mayTell(asker)) {
            BLOG_TAGGED(blog::kUnsupported, "no component of type %u\n", type);
        }
        return;
    }
    tellSelected(static_cast<si::ComponentType>(type), core.browsers.all());
}

void ComponentsRoom::cmdUnselectComponent(Browser asker, ComponentType wanted) {
    const auto type = static_cast<std::uint32_t>(wanted);
    if (type >= kTypes) {
        if (core.browsers.mayTell(asker)) {
            BLOG_TAGGED(blog::kUnsupported, "no component of type %u\n", type);
        }
        return;
    }
    shown.unselect(static_cast<si::ComponentType>(type));
    tellSelected(static_cast<si::ComponentType>(type), core.browsers.all());
}

/// Nothing until a valid PMT has arrived.
std::optional<std::vector<si::Component>> ComponentsRoom::listOf(const Channel& channel) const {
    const broadcast::SiDatabase& si = core.received().si;
    const si::Pmt* const pmt = si.pmtFields(channel.serviceId);
    if (pmt == nullptr) {
        return std::nullopt;
    }
    return si::components(*pmt, presentEvent(si.eit(channel.serviceId)));
}

void ComponentsRoom::servicePresented(const Channel& channel) {
    shown.begin(listOf(channel).value_or(std::vector<si::Component>()));
}

void ComponentsRoom::pmtChanged(const Channel& channel, const Section&, bool) {
    update(channel);
}

void ComponentsRoom::eitChanged(const Channel& channel, const Section&, bool) {
    update(channel);
}

void ComponentsRoom::update(const Channel& channel) {
    std::optional<std::vector<si::Component>> list = listOf(channel);
    if (list && shown.update(std::move(*list))) {
        tellAll(core.browsers.all());
    }
}

void ComponentsRoom::tell(Part part, const Channel&, const Audience& to) {
    if (part == Part::pmt) {
        tellAll(to);
    }
}

void ComponentsRoom::tellAll(const Audience& to) {
    for (const si::Component& component : shown.list()) {
        const bool isSelected = shown.selected(component.type) == &component;
        core.browsers.tell(to, &Events::onComponentInfoChange, component.index,
                           static_cast<std::uint32_t>(component.type), component.pid, component.encoding,
                           component.aspectRatio, component.audioChannels, tagOf(component),
                           component.scrambled ? 1 : 0, languageCode(component.language), isSelected ? 1 : 0);
    }
    for (std::uint32_t type = 0; type < kTypes; ++type) {
        if (shown.selected(static_cast<si::ComponentType>(type)) != nullptr) {
            tellSelected(static_cast<si::ComponentType>(type), to);
        }
    }
}

void ComponentsRoom::tellSelected(si::ComponentType type, const Audience& to) {
    const Channel* const channel = core.presented();
    if (channel == nullptr) {
        return;
    }
    const si::Component* const selected = shown.selected(type);
    core.browsers.tell(to, &Events::onSelectedComponentChange, selected == nullptr ? kNoIndex : selected->index,
                       static_cast<std::uint32_t>(type), selected == nullptr ? broadcast::kNullPid : selected->pid,
                       channel->networkId(), channel->transportStreamId, channel->serviceId);
}

}  // namespace dtvservice
