// DvbAITSectionAPI: implements "DvbAITAPI". Holds the one AIT client and delivers sections to it.
// Threads: any.
// Blocks:  never.
// Locks:   none; the client's pointer is atomic.
#pragma once

#include <atomic>

#include "dvb_ait_section_interface.h"

namespace velmora::dvbservice {

class DTV_BROWSER_API DvbAITSectionAPI : public dtv::DVBAITSectionInterface {
public:
    static DvbAITSectionAPI* GetInstance();
    static DvbAITSectionAPI* getInstance();

    void AddRef() override;
    void Release() override;
    std::string name() override;
    bool registerClient(dtv::AITSectionClient* client) override;
    bool unRegisterClient(dtv::AITSectionClient* client) override;
    bool getCurrentChannelAIT(dtv::AITSectionClient* client, std::uint16_t onId, std::uint16_t tsId,
                              std::uint16_t sId) override;

    /// Whether any client is registered; the argument is ignored.
    bool isRegistered(dtv::AITSectionClient* client);
    /// The catcher calls this under its delivery lock.
    void notifyCurrentChannelAIT(std::uint16_t onId, std::uint16_t tsId, std::uint16_t sId,
                                 const std::vector<std::uint8_t>& section);

private:
    std::atomic<dtv::AITSectionClient*> registered{nullptr};  // owned by the browser
};

}  // namespace velmora::dvbservice
