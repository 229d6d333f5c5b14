// What the process of a DTV service needs, whatever the service plays: browsers, signals, and the lines that say how to
// connect.
// Threads: the main thread; a SignalWaiter has one of its own.
// Blocks:  as each says.
// Fails:   as each says.
#pragma once

#include <signal.h>

#include <thread>

#include "commands.h"
#include "event_loop.h"

namespace dtvservice {

/// SIGINT and SIGTERM stop the loop. All threads block them, and a thread of their own waits for them. SIGUSR1 ends
/// this thread.
class SignalWaiter {
public:
    explicit SignalWaiter(EventLoop& loop);
    SignalWaiter(const SignalWaiter&) = delete;
    SignalWaiter& operator=(const SignalWaiter&) = delete;
    ~SignalWaiter();

private:
    sigset_t signals{};
    std::thread thread;
};

/// From now on browsers can connect, until stopTakingBrowsers(). Negative if they cannot; the log says why.
int startTakingBrowsers(Commands& commands, Browsers& browsers);
/// The same at the start of a service: false, with a line for the user, if they cannot.
bool takeBrowsers(Commands& commands, Browsers& browsers);
void stopTakingBrowsers();

/// How to reach this service. Programs of the same user find it without a setting unless it has one itself.
void sayHowToConnect();

}  // namespace dtvservice
