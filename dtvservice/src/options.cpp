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
    if (const std::optional<std::string> scenario = arguments.value("scenario")) {
        options.settings.scenario = scenarioOrEnd(*scenario);
    }
    if (options.inputs.empty() == options.list.empty()) {
        endWithUsage("one of --input and --list is needed");
    }
    return options;
}

}  // namespace dtvservice
