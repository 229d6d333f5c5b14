// dvbshell: a browser host for the command line. It uses the library's browser-facing headers only.
#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <cstring>

#include "ait_link.h"
#include "command_line/standard_descriptors.h"
#include "for_life.h"
#include "interrupt.h"
#include "json_printer.h"
#include "library.h"
#include "prompt.h"
#include "terminal.h"
#include "verbs.h"

namespace {

using namespace dvbshell;

const command_line::Program& program() {
    return describe(Place::commandLine);
}

/// The platform reads its settings when the library is loaded.
void chooseLog(const command_line::Arguments& arguments) {
    const std::vector<std::string> wanted = arguments.values("log");
    for (const std::string& value : wanted) {
        const std::vector<std::string>& levels = logLevels();
        const bool isLevel = std::find(levels.begin(), levels.end(), value) != levels.end();
        // A mistyped level is no file.
        if (!isLevel && value.find_first_of("/.") == std::string::npos) {
            command_line::endWithUsageError(program(), "--log: \"" + value +
                                                           "\" is none of off, failure, warning, ordinary, trace, and "
                                                           "no file: a file has a slash or a dot in its name");
        }
        setenv(isLevel ? "DTV_LOG_LEVEL" : "DTV_LOG_FILE", value.c_str(), 1);
    }
    if (wanted.empty() && std::getenv("DTV_LOG_LEVEL") == nullptr && std::getenv("DTV_LOG_FILE") == nullptr) {
        setenv("DTV_LOG_LEVEL", "off", 1);
    }
}

Colour chosenColour(const command_line::Arguments& arguments) {
    const std::string text = arguments.value("color").value_or("auto");
    Colour colour = Colour::automatic;
    if (!parseColour(text, colour)) {
        command_line::endWithUsageError(program(), "--color: \"" + text + "\" is none of always, never, auto");
    }
    return colour;
}

/// The job of the command line; the prompt if it has no command.
Job chosenJob(const command_line::Arguments& arguments) {
    if (arguments.verb == nullptr) {
        return runPrompt;
    }
    std::string error;
    Job job = prepare(Place::commandLine, arguments, error);
    if (!job) {
        command_line::endWithUsageError(program(), error);
    }
    return job;
}

int run(const command_line::Arguments& arguments, const Job& job, std::FILE* output) {
    const std::string library = arguments.value("library").value_or(defaultLibraryPath());
    std::string error;
    velmora::dtv::DvbAPIInterface* const api = loadDvbApi(library, error);
    // Events may arrive at any time, so the queue lives as long as the process.
    EventQueue& queue = forLife(new EventQueue);
    AitLink* const link = api == nullptr ? nullptr : AitLink::load(library, queue, error);
    auto* const filters =
        link == nullptr
            ? nullptr
            : static_cast<velmora::dtv::DVBSectionInterface*>(loadInterface(library, "SectionFilterAPI", error));
    if (filters == nullptr) {
        std::fprintf(stderr, "dvbshell: %s\n", error.c_str());
        return kFailed;
    }
    const bool json = arguments.has("json");
    const std::unique_ptr<Printer> printer =
        json ? std::make_unique<JsonPrinter>(output) : std::make_unique<Printer>(output);
    Host host{*api, makeListener(queue, link), link};
    Session session(host, *filters, queue, *printer);
    session.output = output;
    session.json = json;
    api->addListener(host.listener);
    const int result = job(session);
    api->removeListener(host.listener);
    return result;
}

}  // namespace

int main(int argc, char** argv) {
    command_line::keepStandardDescriptors();
    std::setlocale(LC_CTYPE, "C.UTF-8");
    const command_line::Arguments arguments = command_line::parseOrEnd(program(), argc, argv);
    const Colour colour = chosenColour(arguments);
    const Job job = chosenJob(arguments);
    chooseLog(arguments);
    catchInterrupts();
    // A demonstration is for people, in a file too.
    constexpr std::size_t kDemoWidth = 100;
    const bool isDemo = arguments.verb != nullptr && arguments.verb->name == "demo";
    const Terminal terminal(colour, isDemo ? kDemoWidth : 0);
    const int result = run(arguments, job, arguments.has("json") ? stdout : terminal.stream());
    if (terminal.failed()) {
        std::fprintf(stderr, "dvbshell: cannot write to the standard output: %s\n", std::strerror(errno));
        return kFailed;
    }
    return result;
}
