// PageTune: whether the presented channel is the outcome of a tune that the running application's page has asked for.
// The request comes from the page's process, the outcome from the DTV service, and nothing orders the two. Of a tune
// that fails, only the page's process hears.
// Threads: one.
// Blocks:  never.
#pragma once

#include <optional>

#include "si/triplet.h"

namespace tvbrowser {

/// While the broadcast has not announced its network, any original_network_id matches.
bool isSameChannel(const si::Triplet& one, const si::Triplet& other);

class PageTune {
public:
    /// The page tunes. No target: the request has a delivery system in place of a triplet.
    void ask(const std::optional<si::Triplet>& newTarget, const std::optional<si::Triplet>& presented);
    /// The viewer zaps: what the page asked for before does not count any more, and the next outcome is the viewer's.
    void giveWay();
    /// The outcome of any tune; no channel if it failed. `isOther`: another channel was presented before.
    void onOutcome(const std::optional<si::Triplet>& channel, bool isOther);

    bool hasSucceeded() const { return state == State::succeeded; }
    void end() { state = State::none; }

private:
    enum class State { none, asked, succeeded };

    State state = State::none;
    std::optional<si::Triplet> target;
    bool isViewersNext = false;
    bool isUnasked = false;  ///< the channel came by a tune that nobody is known to have asked for
};

}  // namespace tvbrowser
