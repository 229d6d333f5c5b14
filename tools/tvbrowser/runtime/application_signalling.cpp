// The application manager and the broadcast: channel changes, AIT, and applications that join or leave the broadcast.
#include <algorithm>

#include "application_manager.h"
#include "application_url.h"

namespace tvbrowser {

void ApplicationManager::channelChanged(bool started, const std::optional<si::Triplet>& presented) {
    // An AIT that came before the first channel was known is that channel's.
    const bool isOther = presented && channel && !isSameChannel(*presented, *channel);
    if (life) {
        life->tune.onOutcome(started ? presented : std::nullopt, isOther);
    }
    if (presented) {
        channel = presented;
    }
    if (!isOther) {
        joinBroadcast();
        return;
    }
    isAitKnown = false;
    ait.clear();
    declined.clear();
    const bool isBound = life && life->application.isBroadcastRelated && life->application.isServiceBound;
    if (isBound && terminal.endsServiceBound) {
        end("it is bound to the service before");
    }
}

void ApplicationManager::aitReceived(const Applications& applications) {
    takeAit(applications);
}

void ApplicationManager::aitAbsent() {
    takeAit({});
}

void ApplicationManager::takeAit(const Applications& applications) {
    if (isAitKnown && applications == ait) {
        return;
    }
    isAitKnown = true;
    ait = applications;
    const auto isNoAutostart = [this](const ApplicationId& id) {
        return std::none_of(ait.begin(), ait.end(), [&id](const SignalledApplication& one) {
            return one.id == id && one.control == ControlCode::autostart;
        });
    };
    declined.erase(std::remove_if(declined.begin(), declined.end(), isNoAutostart), declined.end());
    followSignalling();
}

void ApplicationManager::followSignalling() {
    joinBroadcast();
    if (life && life->application.isBroadcastRelated) {
        const SignalledApplication* const application = findRunnable(ait, *life->application.id);
        if (application == nullptr) {
            end("the channel does not signal it, or no longer lets it run");
        } else {
            life->application.boundaries = application->boundaries;
            life->application.isServiceBound = application->isServiceBound;
        }
    }
    if (!life) {
        startBest(ControlCode::autostart);
    }
}

void ApplicationManager::joinBroadcast() {
    if (!isAitKnown || !life || life->application.isBroadcastRelated || !life->tune.hasSucceeded()) {
        return;
    }
    life->tune.end();
    RunningApplication& joining = life->application;
    const auto isIt = [&joining](const SignalledApplication& one) {
        return mayRun(one) && (joining.id ? one.id == *joining.id : isEntryPoint(one, joining.url));
    };
    const auto found = std::find_if(ait.begin(), ait.end(), isIt);
    if (found == ait.end()) {
        return;
    }
    joining.id = found->id;
    joining.name = found->name;
    joining.boundaries = found->boundaries;
    joining.isServiceBound = found->isServiceBound;
    joining.isBroadcastRelated = true;
    host.log("application " + applicationIdText(found->id) + " becomes broadcast-related");
    host.applicationChanged(joining);
}

void ApplicationManager::tuneRequested(Instance caller, const std::optional<si::Triplet>& target) {
    if (isRunning(caller) && !life->application.isBroadcastRelated) {
        life->tune.ask(target, channel);
        joinBroadcast();
    }
}

void ApplicationManager::becomeIndependent(Instance caller) {
    if (!isRunning(caller) || !life->application.isBroadcastRelated) {
        return;
    }
    life->application.isBroadcastRelated = false;
    life->tune = PageTune();
    host.log("application " + applicationIdText(*life->application.id) + " becomes broadcast-independent");
    host.applicationChanged(life->application);
}

bool ApplicationManager::isDeclined(const ApplicationId& id) const {
    return std::find(declined.begin(), declined.end(), id) != declined.end();
}

void ApplicationManager::startBest(ControlCode control) {
    const SignalledApplication* const best = bestOf(ait, [this, control](const SignalledApplication& one) {
        const bool isOffered =
            control == ControlCode::autostart ? !isDeclined(one.id) : one.visibility == kVisibleToAll;
        return one.control == control && isOffered && isStartable(one);
    });
    if (best != nullptr) {
        startSignalled(*best, entryPoints(*best));
    }
}

}  // namespace tvbrowser
