// CaRoom: simulated CA modules and browsers' messages to them. The operator inserts the modules and answers the
// messages.
// Threads: the loop's.
// Blocks:  never.
// Fails:   a message that cannot be stored gets the answer "cannot process request".
#pragma once

#include "core.h"
#include "drm_messages.h"

namespace dtvservice {

class CaRoom : public Room {
public:
    explicit CaRoom(Core& newCore);

    void browserGone(Browser browser) override { messages.forget(browser); }

private:
    void cmdCaDrmRequestConnect(Browser asker, unsigned long long session);
    void cmdCaDrmRequestDisconnect(Browser asker, unsigned short slot);
    void cmdSendDrmMessage(Browser asker, unsigned long long session, unsigned short caSystemId, unsigned short second,
                           const std::string& type, const std::string& message);
    nlohmann::json insert(const nlohmann::json& request);
    nlohmann::json remove(const nlohmann::json& request);
    std::uint64_t repliedSession(const nlohmann::json& request) const;
    nlohmann::json reply(const nlohmann::json& request);
    nlohmann::json describe(const nlohmann::json& request);
    nlohmann::json setSlot(unsigned short slot, bool inserted);
    unsigned short lowestSlot() const;

    Core& core;
    std::set<unsigned short> slots;  // slots with a module
    DrmMessages messages;
};

}  // namespace dtvservice
