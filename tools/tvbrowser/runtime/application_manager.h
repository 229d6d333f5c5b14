// The application manager of a terminal (TS 102 796, clause 6.2; TS 102 809, clause 5.2): which application runs, from
// the signalling of the presented channel, from what its page asks for, and from the remote control. One application
// runs at a time.
// Threads: one.
// Blocks:  never.
// Fails:   a request that is refused changes nothing, and the host's log says why.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "application_choice.h"
#include "application_host.h"
#include "application_life.h"
#include "keyset.h"
#include "remote.h"
#include "si/triplet.h"

namespace tvbrowser {

class ApplicationManager {
public:
    explicit ApplicationManager(ApplicationHost& newHost, const Terminal& newTerminal = {});

    // The broadcast.

    /// The outcome of a tune, or the first channel known. After a failed tune, `presented` is what stays.
    void channelChanged(bool started, const std::optional<si::Triplet>& presented);
    /// The complete AIT of the presented channel. An AIT that comes again unchanged changes nothing.
    void aitReceived(const Applications& applications);
    /// The PMT of the presented channel signals no AIT.
    void aitAbsent();

    // The engine.

    void pageLoaded(Instance instance);
    /// A first page that does not load is tried by the application's other transports.
    void loadFailed(Instance instance, const std::string& reason);
    void webProcessDied(Instance instance);
    /// What an application has been started by is an XML AIT with these applications: the best one that is AUTOSTART
    /// takes its place. A broadcast-related application has been signalled already, and cannot begin so.
    void xmlAitReceived(Instance instance, const Applications& applications);

    // Requests of the page of an application. Those of one that does not run any more change nothing.

    /// `dvb://current.ait/ORG.APP` starts a signalled application. An HTTP URL that is the entry point of a signalled
    /// one starts that one, any other starts a broadcast-independent application. The new application replaces the
    /// caller.
    bool createApplication(Instance caller, const std::string& url);
    void destroyApplication(Instance caller);
    void show(Instance caller);
    void hide(Instance caller);
    /// Returns the mask that is set: the bits of keys that the remote has.
    KeyMask setKeyset(Instance caller, KeyMask mask, const std::vector<unsigned int>& otherKeys = {});
    /// The page tunes, by a triplet or by a delivery system. When the tune leads to a channel that signals its
    /// broadcast-independent application, the application becomes broadcast-related. channelChanged() may come before.
    void tuneRequested(Instance caller, const std::optional<si::Triplet>& target);
    /// The page has left the broadcast, by setChannel(null).
    void becomeIndependent(Instance caller);
    /// Whether the application may go on to a page: one inside of its boundary.
    bool mayGoOnTo(Instance caller, const std::string& url) const;
    /// The page has gone on to one outside of the boundary, which is a broadcast-independent application in its place.
    void leftBoundary(Instance caller, const std::string& url);

    // The operator.

    /// Starts an application that is signalled and may run, in place of any other.
    bool start(const ApplicationId& id);
    /// Starts a broadcast-independent application.
    bool startIndependent(const std::string& url, const std::optional<ApplicationId>& id = std::nullopt);
    /// The EXIT key.
    void exit();
    /// A key of the remote control goes down or up. The manager has done what concerns applications; the rest is the
    /// caller's.
    KeyAction key(const RemoteKey& key, bool isDown);

    /// Null: none runs. Valid until the next call.
    const RunningApplication* running() const;
    const Applications& signalled() const { return ait; }

private:
    bool isRunning(Instance instance) const { return life && life->application.instance == instance; }

    void begin(RunningApplication application, std::vector<std::string> otherUrls = {});
    /// `urls`: the entry point by each transport, at least one.
    void startSignalled(const SignalledApplication& application, const std::vector<std::string>& urls);
    void loadByNextTransport(const std::string& reason);
    bool refuse(const std::string& why);
    void end(const std::string& why);
    /// Ends it for a reason that is not the broadcast's: nothing is autostarted in its place.
    void endForGood(const std::string& why);
    void fail(const std::string& why);

    void takeAit(const Applications& applications);
    void followSignalling();
    void joinBroadcast();
    void startBest(ControlCode control);
    bool isDeclined(const ApplicationId& id) const;
    bool isStartable(const SignalledApplication& application);

    void setVisible(Instance caller, bool isVisible);
    bool goesToPage(const RemoteKey& key, bool isDown);
    KeyAction zap(const RemoteKey& key);

    ApplicationHost& host;
    const Terminal terminal;
    std::optional<si::Triplet> channel;
    bool isAitKnown = false;  ///< of this channel: it has come, or there is none
    Applications ait;
    std::vector<ApplicationId> declined;  ///< not autostarted again while they stay AUTOSTART on this channel
    std::optional<ApplicationLife> life;
    Instance lastInstance = 0;
};

}  // namespace tvbrowser
