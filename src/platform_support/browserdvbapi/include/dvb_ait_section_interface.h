// DVBAITSectionInterface ("DvbAITAPI"): gives the browser the AIT sections that the AIT catcher delivers for the
// current channel.
// The binary rules at the top of idtv_unknown.h apply.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "idtv_unknown.h"

namespace velmora::dtv {

/// Implemented by the browser, which owns it: it must live until it is unregistered and no call of
/// onCurrentChannelAIT() runs. Nothing tells when the last call has ended, so keep it until the process ends.
class AITSectionClient {
public:
    /// Receives one whole AIT section, or an empty one for a section number that a replay did not find. Runs under the
    /// catcher's delivery lock, on the thread that fed the catcher or on a replay's thread: do not feed an AIT from
    /// here.
    virtual void onCurrentChannelAIT(std::uint16_t onId, std::uint16_t tsId, std::uint16_t sId,
                                     const std::vector<std::uint8_t>& section) = 0;

protected:
    // Not virtual, so that onCurrentChannelAIT is the first virtual-table entry. The library never deletes a client.
    ~AITSectionClient() = default;
};

class DVBAITSectionInterface : public IDTVUnknown {
public:
    /// Makes `client` the one client, replacing any earlier one. True.
    virtual bool registerClient(AITSectionClient* client) = 0;
    /// Removes the registered client, whichever client is given. True.
    virtual bool unRegisterClient(AITSectionClient* client) = 0;
    /// Registers the client and replays the stored AIT sections of a channel to it, on a separate thread. True unless
    /// there is no AIT catcher.
    virtual bool getCurrentChannelAIT(AITSectionClient* client, std::uint16_t onId, std::uint16_t tsId,
                                      std::uint16_t sId) = 0;
};

}  // namespace velmora::dtv
