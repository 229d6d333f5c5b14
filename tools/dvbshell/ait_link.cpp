// Feeding the AIT catcher.
#include "ait_link.h"

#include "for_life.h"
#include "library.h"

namespace dvbshell {

namespace {

constexpr const char* kGetInstance = "_ZN7velmora10dvbservice17BrowserAITCatcher11getInstanceEv";
constexpr const char* kUpdateChannel = "_ZN7velmora10dvbservice17BrowserAITCatcher24updateCurrentChannelInfoEtttt";
constexpr const char* kUpdateAit =
    "_ZN7velmora10dvbservice17BrowserAITCatcher9updateAITENSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE";

bool loadCatcher(const std::string& path, AitCatcher& catcher, std::string& error) {
    using GetInstance = velmora::dvbservice::BrowserAITCatcher* (*)();
    const auto getInstance = reinterpret_cast<GetInstance>(loadFunction(path, kGetInstance, error));
    catcher.updateCurrentChannelInfo = reinterpret_cast<AitCatcher::Update>(loadFunction(path, kUpdateChannel, error));
    catcher.updateAIT = reinterpret_cast<AitCatcher::UpdateAit>(loadFunction(path, kUpdateAit, error));
    if (getInstance == nullptr || catcher.updateCurrentChannelInfo == nullptr || catcher.updateAIT == nullptr) {
        return false;
    }
    catcher.catcher = getInstance();
    return catcher.catcher != nullptr;
}

}  // namespace

AitLink* AitLink::load(const std::string& libraryPath, EventQueue& queue, std::string& error) {
    AitCatcher catcher;
    auto* const ait =
        static_cast<velmora::dtv::DVBAITSectionInterface*>(loadInterface(libraryPath, "DvbAITAPI", error));
    if (ait == nullptr || !loadCatcher(libraryPath, catcher, error)) {
        return nullptr;
    }
    return &forLife(new AitLink(catcher, *ait, queue));
}

AitLink::AitLink(const AitCatcher& newCatcher, velmora::dtv::DVBAITSectionInterface& newInterface, EventQueue& newQueue)
    : catcher(newCatcher), ait(newInterface), queue(newQueue) {
    ait.registerClient(this);
}

void AitLink::onChannel(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid) {
    constexpr std::uint16_t kUnused = 0;  // the catcher stores the first value and never reads it
    current = Channel{onid, tsid, sid};
    catcher.updateCurrentChannelInfo(catcher.catcher, kUnused, onid, tsid, sid);
}

/// No change event reports the channel that is already presented when the browser starts. Its AIT is the first to name
/// it. A browser that connects while an AIT is sent can get a section before its channel, which is then 0:0:0. Such a
/// section is ignored: it comes again behind its channel, with the next tune or notifyMwhbStart().
void AitLink::onAit(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid, const std::string& section) {
    if (onid == 0 && tsid == 0 && sid == 0) {
        return;
    }
    if (!current || current->onid != onid || current->tsid != tsid || current->sid != sid) {
        onChannel(onid, tsid, sid);
    }
    catcher.updateAIT(catcher.catcher, section);
}

bool AitLink::replay(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid) {
    return ait.getCurrentChannelAIT(this, onid, tsid, sid);
}

void AitLink::onCurrentChannelAIT(std::uint16_t onId, std::uint16_t tsId, std::uint16_t sId,
                                  const std::vector<std::uint8_t>& section) {
    Event event;
    event.kind = EventKind::application;
    event.name = "onCurrentChannelAIT";
    event.onid = onId;
    event.tsid = tsId;
    event.sid = sId;
    event.section.assign(section.begin(), section.end());
    queue.put(std::move(event));
}

}  // namespace dvbshell
