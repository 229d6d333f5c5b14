// Matches requests and outcomes.
#include "page_tune.h"

#include <utility>

#include "si/tables.h"

namespace tvbrowser {

bool isSameChannel(const si::Triplet& one, const si::Triplet& other) {
    const bool isNetwork =
        one.onid == other.onid || one.onid == si::kUnknownNetworkId || other.onid == si::kUnknownNetworkId;
    return isNetwork && one.tsid == other.tsid && one.sid == other.sid;
}

/// An outcome that came before its request is told by the channel, or, without a target, by its having been unasked.
void PageTune::ask(const std::optional<si::Triplet>& newTarget, const std::optional<si::Triplet>& presented) {
    const bool isThere = presented && (newTarget ? isSameChannel(*newTarget, *presented) : isUnasked);
    isUnasked = false;
    state = isThere ? State::succeeded : State::asked;
    target = isThere ? presented : newTarget;
}

void PageTune::giveWay() {
    *this = PageTune();
    isViewersNext = true;
}

/// Channels on the way to the target, such as those of earlier requests, leave it asked.
void PageTune::onOutcome(const std::optional<si::Triplet>& channel, bool isOther) {
    const bool isViewers = std::exchange(isViewersNext, false);
    if (!channel) {
        state = state == State::asked && !isViewers ? State::none : state;
        return;
    }
    const bool isTarget = target ? isSameChannel(*target, *channel) : !isViewers;
    if (state == State::asked && isTarget) {
        state = State::succeeded;
        target = channel;
    } else if (state == State::succeeded && !isTarget) {
        state = State::none;
    }
    isUnasked = isUnasked || (state == State::none && isOther && !isViewers);
}

}  // namespace tvbrowser
