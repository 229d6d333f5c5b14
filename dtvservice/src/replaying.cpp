// Opens the recording, says what is in it, and serves.
#include "replaying.h"

#include <algorithm>
#include <cstdio>

#include "command_line/output.h"
#include "control_socket.h"
#include "operator_server.h"
#include "replay_service.h"
#include "running.h"
#include "text/printable.h"

namespace dtvservice {

namespace {

using command_line::say;

void warn(const std::string& line) {
    std::fprintf(stderr, "dtvserviced: %s\n", text::printable(line).c_str());
}
void warn(const std::string& file, const std::string& line) {
    std::fprintf(stderr, "dtvserviced: %s: %s\n", text::printable(file).c_str(), text::printable(line).c_str());
}

std::string counted(std::uint64_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

void sayWhatIsWrong(const std::string& file, const Recording& recording) {
    for (const std::string& problem : recording.problems) {
        warn(file, problem);
    }
    if (recording.moreProblems != 0) {
        warn(file, counted(recording.moreProblems, "more problem"));
    }
    if (recording.lost != 0) {
        warn(file + ": it lacks " + counted(recording.lost, "record") + " that dtvmon lost");
    }
    if (recording.unsentEvents != 0) {
        warn(file, counted(recording.unsentEvents, "event") + " did not leave the service and stays away");
    }
    if (recording.droppedSections != 0) {
        warn(file, counted(recording.droppedSections, "section") + " had no room in a queue and stays away");
    }
}

void sayBrowsers(const Recording& recording) {
    for (const RecordedBrowser& browser : recording.browsers) {
        say("recorded browser " + std::to_string(browser.number) + ": " +
            (browser.program.empty() ? std::string() : text::printable(browser.program) + ", ") +
            counted(browser.steps.size(), "record") +
            (browser.beganBefore ? "; it connected before the recording began" : ""));
    }
}

bool has(const Recording& recording, std::uint32_t number) {
    return std::any_of(recording.browsers.begin(), recording.browsers.end(),
                       [number](const RecordedBrowser& browser) { return browser.number == number; });
}

int serve(Recording recording, const ReplayOptions& options) {
    EventLoop loop;
    const SignalWaiter signals(loop);
    ReplayService service(loop, options.file, std::move(recording), {options.pace, options.browser});
    if (!takeBrowsers(service.commands, service.browsers)) {
        return 1;
    }
    const OperatorServer operators(control::defaultSocketPath(), loop, service.tap,
                                   [&service](const std::string& request) { return service.answer(request); });
    if (!operators.error().empty()) {
        warn("cannot take operators: " + operators.error());
    }
    sayHowToConnect();
    say("ready: replaying " + options.file);
    loop.run();
    stopTakingBrowsers();
    return 0;
}

}  // namespace

int replay(const ReplayOptions& options) {
    std::string error;
    std::optional<Recording> recording = readRecording(options.file, error);
    if (!recording) {
        warn(error);
        return 1;
    }
    sayWhatIsWrong(options.file, *recording);
    sayBrowsers(*recording);
    if (options.browser && !has(*recording, *options.browser)) {
        warn(options.file, "no browser has the number " + std::to_string(*options.browser));
        return 1;
    }
    return serve(std::move(*recording), options);
}

}  // namespace dtvservice
