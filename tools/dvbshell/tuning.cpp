// Waits for the answer to a tune.
#include "tuning.h"

#include "interrupt.h"
#include "si/tables.h"

namespace dvbshell {

namespace {

int failTune(Session& session, const TuneGoal& goal, const std::string& reason) {
    const std::optional<Triplet> stays = session.presented();
    return fail(session, "not tuned to " + goal.what + ": " + reason + "; " +
                             (stays ? tripletText(*stays) + " stays" : "no channel is presented"));
}

}  // namespace

bool isOfChannel(const Event& event, const Triplet& channel) {
    const bool isNetwork =
        event.onid == channel.onid || event.onid == si::kUnknownNetworkId || channel.onid == si::kUnknownNetworkId;
    return isNetwork && event.tsid == channel.tsid && event.sid == channel.sid;
}

TuneGoal goalOf(const Triplet& channel) {
    return {tripletText(channel), [channel](const Event& event) { return isOfChannel(event, channel); }};
}

int followTune(Session& session, const TuneGoal& goal, Clock::time_point end) {
    bool reached = false;
    while (!(reached && session.atPrompt)) {
        const std::optional<Event> event = session.next(session.events, end);
        if (!event) {
            break;
        }
        session.print(*event);
        if (event->kind != EventKind::channel) {
            continue;
        }
        reached = reached || (event->started && goal.isReached(*event));
        if (!event->started && !reached) {
            return failTune(session, goal, "the DTV service has no such channel");
        }
    }
    if (session.connection.isGone()) {
        return kNoService;
    }
    if (!reached && isInterrupted()) {
        return kFailed;
    }
    return reached ? kDone : failTune(session, goal, "no answer came");
}

void startTune(Session& session, int idType, const Triplet& channel) {
    session.host.api.tuneToService(idType, channel.onid, channel.tsid, channel.sid, 0);
}

}  // namespace dvbshell
