// Handles the commands and operator's requests that concern the TV itself.
#include "device_room.h"
#include "request_values.h"

namespace dtvservice {

using nlohmann::json;

DeviceRoom::DeviceRoom(Core& newCore, std::string newSerialNumber)
    : core(newCore), serialNumber(std::move(newSerialNumber)) {
    core.commands.on.cmdSetAudioSource = calls(*this, &DeviceRoom::cmdSetAudioSource);
    core.commands.on.cmdVodGetMaxdomeSecureSerialNumber = calls(*this, &DeviceRoom::cmdVodGetMaxdomeSecureSerialNumber);
    core.requests.add("engine", calls(*this, &DeviceRoom::setEngine));
    core.requests.add("stop-terminals", calls(*this, &DeviceRoom::stopTerminals));
}

/// This service plays no sound, so every audio source works and the change is done at once.
void DeviceRoom::cmdSetAudioSource(Browser asker, unsigned int session, const std::string& source) {
    constexpr int kDone = 0;
    if (core.browsers.mayTell(asker)) {
        BLOG_TAGGED(blog::kOrdinary, "audio source \"%s\", session %u\n", shownName(source).c_str(), session);
    }
    core.browsers.tell({asker}, &Events::onSetAudioSourceFinished, session, kDone);
}

void DeviceRoom::cmdVodGetMaxdomeSecureSerialNumber(Browser asker, const std::string&) {
    core.browsers.tell({asker}, &Events::onVodMaxdomeSecureSerialNumber, serialNumber);
}

json DeviceRoom::setEngine(const json& request) {
    const auto status = getNumber<std::int32_t>(request, "engine_status");
    core.browsers.tell(core.browsers.all(), &Events::onHbbtvEngineStatusChanged, status);
    return json::object();
}

json DeviceRoom::stopTerminals(const json&) {
    core.browsers.tell(core.browsers.all(), &Events::onAllTerminalStoped);
    return json::object();
}

}  // namespace dtvservice
