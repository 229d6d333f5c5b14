// Starts and stops.
#include "running.h"

#include <cstdio>
#include <cstdlib>

#include "command_line/output.h"
#include "control_socket.h"
#include "frame/process.h"

namespace dtvservice {

namespace {

Commands* theCommands = nullptr;
Browsers* theBrowsers = nullptr;

/// Called by the process model to make the process's members. There is one: the stub, which passes commands on.
frame::AbstractApplication** createServiceStub() {
    auto** const members =
        static_cast<frame::AbstractApplication**>(std::calloc(2, sizeof(frame::AbstractApplication*)));
    auto* const stub = new lo::browserdvbservice::ServiceStub(*theCommands);
    theBrowsers->connect(*stub);
    members[0] = stub;
    return members;
}

}  // namespace

SignalWaiter::SignalWaiter(EventLoop& loop) {
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGUSR1}) {
        sigaddset(&signals, signal);
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    thread = std::thread([this, &loop] {
        int signal = 0;
        sigwait(&signals, &signal);
        loop.stop();
    });
}

SignalWaiter::~SignalWaiter() {
    pthread_kill(thread.native_handle(), SIGUSR1);
    thread.join();
}

int startTakingBrowsers(Commands& commands, Browsers& browsers) {
    theCommands = &commands;
    theBrowsers = &browsers;
    return frame::Process::getInstance().startAppMembersSync(createServiceStub);
}

bool takeBrowsers(Commands& commands, Browsers& browsers) {
    const int started = startTakingBrowsers(commands, browsers);
    if (started < 0) {
        std::fprintf(stderr, "dtvserviced: cannot take browsers (%d); the log says why\n", started);
    }
    return started >= 0;
}

void stopTakingBrowsers() {
    frame::Process::getInstance().stopAppMembers();
}

void sayHowToConnect() {
    const std::string folder = control::runDirectory();
    command_line::say("run directory: " + folder);
    const bool isSet = std::getenv("DTV_RUN_DIR") != nullptr;
    command_line::say("connect with: " + (isSet ? "DTV_RUN_DIR=" + folder + " " : std::string()) + "dvbshell watch");
}

}  // namespace dtvservice
