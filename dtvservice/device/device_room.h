// DeviceRoom: matters of the TV that are independent of a broadcast: serial number, audio source, HbbTV engine,
// terminals.
// Threads: the loop's.
// Blocks:  never.
// Fails:   never.
#pragma once

#include "core.h"

namespace dtvservice {

class DeviceRoom : public Room {
public:
    DeviceRoom(Core& newCore, std::string newSerialNumber);

private:
    void cmdSetAudioSource(Browser asker, unsigned int session, const std::string& source);
    void cmdVodGetMaxdomeSecureSerialNumber(Browser asker, const std::string& request);
    nlohmann::json setEngine(const nlohmann::json& request);
    nlohmann::json stopTerminals(const nlohmann::json& request);

    Core& core;
    std::string serialNumber;
};

}  // namespace dtvservice
