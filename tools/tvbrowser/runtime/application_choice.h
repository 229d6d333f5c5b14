// Which of the signalled applications may run, and which one the terminal starts.
// Threads: any.
// Blocks:  never.
// Fails:   no value, and `error` says what is wrong.
#pragma once

#include <functional>

#include "application.h"

namespace tvbrowser {

/// What this terminal can do for applications.
struct Terminal {
    Profile best{0, 1, 6, 1};  ///< options (bits) and the newest version
    /// TS 102 809 ends a service-bound application at each channel change, so that the next channel starts it anew.
    /// Without this it goes on, as any other, where the next channel signals it too.
    bool endsServiceBound = false;
};

using Applications = std::vector<SignalledApplication>;

/// AUTOSTART and PRESENT let an application run. All other codes end it, as if it were not signalled.
bool mayRun(const SignalledApplication& application);

/// The first one with the id that may run, or null. The same application can be there more than once.
const SignalledApplication* findRunnable(const Applications& applications, const ApplicationId& id);

/// Why the terminal cannot start the application, with its id; empty if it can.
std::string obstacleTo(const SignalledApplication& application, const Terminal& terminal);

/// What a page's createApplication() starts.
struct RequestedStart {
    const SignalledApplication* application = nullptr;  ///< null: a broadcast-independent one
    std::vector<std::string> urls;                      ///< by each transport, the best first
};

/// The entry point by each transport, the best first, with query and fragment.
std::vector<std::string> entryPoints(const SignalledApplication& application, const std::string& query = "",
                                     const std::string& fragment = "");
/// Whether the URL is the entry point, whatever its query and fragment.
bool isEntryPoint(const SignalledApplication& application, const std::string& url);

/// No value, and `error` says why, if the terminal cannot start anything by the URL.
std::optional<RequestedStart> requestedStart(const std::string& url, const Applications& applications,
                                             const Terminal& terminal, std::string& error);

/// The one with the highest priority, or the first of those with the highest, among all for which `isCandidate`; null
/// if there is none.
const SignalledApplication* bestOf(const Applications& applications,
                                   const std::function<bool(const SignalledApplication&)>& isCandidate);

}  // namespace tvbrowser
