// DVBAITSectionInterface ("DvbAITAPI"): the AIT sections of the current channel, as the AIT catcher hands them on.
// The binary rules at the top of idtv_unknown.h hold.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "idtv_unknown.h"

namespace velmora::dtv {

/// Implemented by the browser, which owns it: it must live until it is unregistered and no call of
/// onCurrentChannelAIT() runs.
class AITSectionClient {
public:
    /// One whole AIT section as received; empty for a section that a replay found missing. Called under the catcher's
    /// delivery lock, on the thread that fed the catcher or on a replay's own: no AIT may be fed from inside.
    virtual void onCurrentChannelAIT(std::uint16_t onId, std::uint16_t tsId, std::uint16_t sId,
                                     const std::vector<std::uint8_t>& section) = 0;

protected:
    // Not virtual: onCurrentChannelAIT is the first entry of the table, and the library never deletes a client.
    ~AITSectionClient() = default;
};

class DVBAITSectionInterface : public IDTVUnknown {
public:
    /// Makes `client` the one client, replacing any earlier one. True.
    virtual bool registerClient(AITSectionClient* client) = 0;
    /// Leaves no client registered, whichever is given. True.
    virtual bool unRegisterClient(AITSectionClient* client) = 0;
    /// Registers the client and replays the stored AIT sections of a channel to it, on a thread of their own. True
    /// unless there is no AIT catcher.
    virtual bool getCurrentChannelAIT(AITSectionClient* client, std::uint16_t onId, std::uint16_t tsId,
                                      std::uint16_t sId) = 0;
};

}  // namespace velmora::dtv
