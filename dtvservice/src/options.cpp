// Reads the options.
#include "options.h"

#include <cstdio>
#include <cstdlib>

#include "application_option.h"
#include "bit_rate.h"
#include "command_line.h"
#include "command_line/arguments.h"
#include "control_socket.h"
#include "dvb_source.h"
#include "http_server.h"
#include "scenario_file.h"
#include "text/printable.h"

namespace dtvservice {

namespace {

[[noreturn]] void endWithUsage(const std::string& error) {
    command_line::endWithUsageError(commandLine(), error);
}

InputName inputOrEnd(const std::string& text) {
    std::string error;
    std::optional<InputName> input = parseInput(text, error);
    if (input && input->kind == InputName::Kind::dvb) {
        error = checkDvb(*input);
    }
    if (!error.empty()) {
        endWithUsage(error);
    }
    return *input;
}

std::uint64_t bitRateOrEnd(const std::string& text) {
    const std::optional<std::uint64_t> bitRate = parseBitRate(text);
    if (!bitRate) {
        endWithUsage("--bitrate: \"" + text + "\" is not a bit rate from 1k to 500M");
    }
    return *bitRate;
}

si::Ait::Application applicationOrEnd(const std::string& text) {
    std::string error;
    std::optional<si::Ait::Application> application = parseApplication(text, error);
    if (!application) {
        endWithUsage("--application: " + error);
    }
    return *application;
}

HttpAddress httpAddressOrEnd(const std::string& text) {
    std::string error = checkHttp();
    const std::optional<HttpAddress> address =
        error.empty() ? parseHttpAddress(text, error) : std::optional<HttpAddress>();
    if (!address) {
        endWithUsage("--http: " + error);
    }
    return *address;
}

/// A wrong file is no wrong command line.
Scenario scenarioOrEnd(const std::string& path) {
    std::string text;
    std::string error;
    std::optional<Scenario> scenario;
    if (control::readScenarioFile(path, text, error)) {
        scenario = parseScenario(text, error);
    }
    if (!scenario) {
        std::fprintf(stderr, "dtvserviced: %s: %s\n", text::printable(path).c_str(), text::printable(error).c_str());
        std::exit(1);
    }
    return *scenario;
}

/// What says how inputs are played, and what they are.
constexpr const char* kOfInputs[] = {"input", "list",        "scenario", "bitrate",
                                     "once",  "application", "http",     "serial-number"};

ReplayOptions replayOptionsOrEnd(const command_line::Arguments& arguments) {
    ReplayOptions options;
    options.file = arguments.value("replay").value_or("");
    if (arguments.has("replay") && options.file.empty()) {
        endWithUsage("--replay: the file has no name");
    }
    for (const char* const option : kOfInputs) {
        if (arguments.has("replay") && arguments.has(option)) {
            endWithUsage("--replay and --" + std::string(option) + " exclude each other");
        }
    }
    for (const char* const option : {"replay-browser", "replay-fast", "replay-wait"}) {
        if (!arguments.has("replay") && arguments.has(option)) {
            endWithUsage("--" + std::string(option) + " needs --replay");
        }
    }
    if (const std::optional<std::string> browser = arguments.value("replay-browser")) {
        constexpr std::uint64_t kMost = 0xFFFFFFFF;
        options.browser = static_cast<std::uint32_t>(
            command_line::numberOrEnd(commandLine(), "--replay-browser", *browser, 0, kMost));
    }
    options.pace.isFast = arguments.has("replay-fast");
    options.pace.wait = options.pace.isFast ? Pace::kFastWait : Pace::kWait;
    if (const std::optional<std::string> wait = arguments.value("replay-wait")) {
        constexpr std::uint64_t kDay = 86400;
        options.pace.wait =
            std::chrono::seconds(command_line::numberOrEnd(commandLine(), "--replay-wait", *wait, 0, kDay));
    }
    return options;
}

}  // namespace

Options parseOptions(int argc, char** argv) {
    const command_line::Arguments arguments = command_line::parseOrEnd(commandLine(), argc, argv);
    Options options;
    for (const std::string& input : arguments.values("input")) {
        options.inputs.push_back(inputOrEnd(input));
    }
    options.list = arguments.value("list").value_or("");
    options.settings.serialNumber = arguments.value("serial-number").value_or("");
    options.settings.carouselFolder = control::runDirectory() + "/carousels";
    options.playing.repeat = arguments.has("once") ? Repeat::once : Repeat::forever;
    if (const std::optional<std::string> bitRate = arguments.value("bitrate")) {
        options.playing.bitRate = bitRateOrEnd(*bitRate);
    }
    if (const std::optional<std::string> application = arguments.value("application")) {
        options.application = applicationOrEnd(*application);
    }
    if (const std::optional<std::string> http = arguments.value("http")) {
        options.http = httpAddressOrEnd(*http);
        options.settings.collecting = Collecting::fromTheStart;
    }
    options.replay = replayOptionsOrEnd(arguments);
    if (const std::optional<std::string> scenario = arguments.value("scenario")) {
        options.settings.scenario = scenarioOrEnd(*scenario);
    }
    if (options.replay.file.empty() && options.inputs.empty() == options.list.empty()) {
        endWithUsage("one of --input, --list and --replay is needed");
    }
    return options;
}

}  // namespace dtvservice
