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

#include "application.h"
#include "application_host.h"
#include "keyset.h"
#include "remote.h"
#include "si/triplet.h"

namespace tvbrowser {

/// What this terminal can do for applications.
struct Terminal {
    Profile best{0, 1, 6, 1};  ///< options (bits) and the newest version
    /// TS 102 809 ends a service-bound application at each channel change, so that the next channel starts it anew.
    /// Without this it goes on, as any other, where the next channel signals it too.
    bool endsServiceBound = false;
};

class ApplicationManager {
public:
    explicit ApplicationManager(ApplicationHost& newHost, const Terminal& newTerminal = {});

    // The broadcast.

    /// The outcome of a tune, or the first channel known. After a failed tune, `presented` is what stays.
    void channelChanged(bool started, const std::optional<si::Triplet>& presented);
    /// The complete AIT of the presented channel. An AIT that comes again unchanged changes nothing.
    void aitReceived(const std::vector<SignalledApplication>& applications);
    /// The PMT of the presented channel signals no AIT.
    void aitAbsent();

    // The engine.

    void pageLoaded(Instance instance);
    void loadFailed(Instance instance, const std::string& reason);
    void webProcessDied(Instance instance);

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
    /// The page tunes. When the tune leads to a channel that signals its broadcast-independent application, the
    /// application becomes broadcast-related.
    void tuneRequested(Instance caller);
    /// The page has left the broadcast, by setChannel(null).
    void becomeIndependent(Instance caller);

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
    const std::vector<SignalledApplication>& signalled() const { return ait; }

private:
    ApplicationHost& host;
    const Terminal terminal;
    std::vector<SignalledApplication> ait;
};

}  // namespace tvbrowser
