// CaRoom: CA modules, which the operator inserts and answers for, and browsers' messages to them.
// Threads: the loop's.   Blocks: never.   Fails: a message that cannot be kept is answered so.
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
    nlohmann::json reply(const nlohmann::json& request);
    nlohmann::json describe(const nlohmann::json& request);
    nlohmann::json setSlot(unsigned short slot, bool inserted);
    unsigned short lowestSlot() const;

    Core& core;
    std::set<unsigned short> slots;  // those with a module
    DrmMessages messages;
};

}  // namespace dtvservice
