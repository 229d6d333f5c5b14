// dvbshell: a browser host for the command line. It knows the library by its browser-facing headers alone.
#include <getopt.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

#include "demo.h"
#include "json_printer.h"
#include "library.h"
#include "operations.h"
#include "prompt.h"

namespace {

using namespace dvbshell;

constexpr int kUsageError = 2;

constexpr const char* kUsage =
    "usage: dvbshell [options]                       a prompt; or operations from standard input, one a line\n"
    "       dvbshell [options] watch                 print what arrives\n"
    "       dvbshell [options] tune ONID:TSID:SID    tune, and print what arrives\n"
    "       dvbshell [options] info                  print the current channel\n"
    "       dvbshell [options] OPERATION [ARGUMENT]  one operation of the DVB API, then print what arrives\n"
    "       dvbshell [options] demo LIST             tune through the services of LIST, as dtvserviced --list prints "
    "them\n"
    "\n"
    "  --library PATH   the library; ../lib/libbrowserdvbapi.so beside this program unless given\n"
    "  --seconds N      how long to print what arrives; watch and tune 5, an operation 1 unless given\n"
    "  --id-type N      OIPF's channel idType of a tune; 12 (DVB-T) unless given\n"
    "  --json           one JSON object a line\n"
    "\n"
    "operations:\n";

void printUsage(std::FILE* output) {
    std::fputs(kUsage, output);
    for (const Operation& operation : operations()) {
        std::fprintf(output, "  %-62s %s\n", synopsis(operation).c_str(), operation.help);
    }
}

struct Options {
    std::string library = defaultLibraryPath();
    std::optional<int> seconds;
    int idType = 12;
    bool json = false;
    std::vector<std::string> words;
};

[[noreturn]] void endWithUsage(const std::string& error) {
    std::fprintf(stderr, "dvbshell: %s\n", error.c_str());
    printUsage(stderr);
    std::exit(kUsageError);
}

int numberOf(const char* name, const char* text) {
    char* end = nullptr;
    errno = 0;
    const long number = std::strtol(text, &end, 10);
    constexpr long kMost = 86400;
    if (*text == '\0' || *end != '\0' || errno != 0 || number < 0 || number > kMost) {
        endWithUsage(std::string(name) + ": \"" + text + "\" is not a number from 0 to 86400");
    }
    return static_cast<int>(number);
}

/// Ends the program when the words are no command: what is wrong with them does not depend on the library.
void checkWords(const std::vector<std::string>& words) {
    const std::string& verb = words[0];
    const bool takesArgument = verb == "tune" || verb == "demo";
    if (takesArgument || verb == "watch" || verb == "info") {
        if (words.size() != (takesArgument ? 2U : 1U)) {
            endWithUsage(verb + (takesArgument ? " takes one argument" : " takes no argument"));
        }
        Triplet triplet;
        if (verb == "tune" && !parseTriplet(words[1], triplet)) {
            endWithUsage("tune: \"" + words[1] + "\" is not ONID:TSID:SID, each from 0 to 65535");
        }
        return;
    }
    const Operation* const operation = findOperation(verb);
    Values values;
    std::string error = "unknown command " + verb;
    if (operation == nullptr || !parseValues(*operation, {words.begin() + 1, words.end()}, values, error)) {
        endWithUsage(error);
    }
}

Options parseOptions(int argc, char** argv) {
    enum { kLibrary = 1, kSeconds, kIdType, kJson, kHelp };
    static const option kOptions[] = {{"library", required_argument, nullptr, kLibrary},
                                      {"seconds", required_argument, nullptr, kSeconds},
                                      {"id-type", required_argument, nullptr, kIdType},
                                      {"json", no_argument, nullptr, kJson},
                                      {"help", no_argument, nullptr, kHelp},
                                      {}};
    Options options;
    opterr = 0;
    while (true) {
        const int found = getopt_long(argc, argv, "+:", kOptions, nullptr);
        if (found == -1) {
            break;
        }
        switch (found) {
            case kLibrary:
                options.library = optarg;
                break;
            case kSeconds:
                options.seconds = numberOf("--seconds", optarg);
                break;
            case kIdType:
                options.idType = numberOf("--id-type", optarg);
                break;
            case kJson:
                options.json = true;
                break;
            case kHelp:
                printUsage(stdout);
                std::exit(0);
            case ':':
                endWithUsage(std::string(argv[optind - 1]) + " needs a value");
            default:
                endWithUsage(std::string("unknown option ") + argv[optind - 1]);
        }
    }
    options.words.assign(argv + optind, argv + argc);
    if (!options.words.empty()) {
        checkWords(options.words);
    }
    return options;
}

int watch(velmora::dtv::DvbAPIInterface& api, EventQueue& queue, Printer& printer, int seconds) {
    const Clock::time_point end = Clock::now() + std::chrono::seconds(seconds);
    while (const std::optional<Event> event = queue.take(end)) {
        printer.print(*event, api.getCurrentCCID());
    }
    return 0;
}

void tune(velmora::dtv::DvbAPIInterface& api, const Options& options) {
    Triplet triplet;
    parseTriplet(options.words[1], triplet);
    api.tuneToService(options.idType, triplet.onid, triplet.tsid, triplet.sid, 0);
}

int info(Host& host, Printer& printer) {
    awaitChannel(host);
    printer.note("channel  " + host.api.getCurrentCCID());
    printer.note("dsd      " + std::to_string(host.api.getCurrentDsd().size()) + " bytes");
    int onid = 0;
    int tsid = 0;
    int sid = 0;
    return host.api.getCurrentChannelInfo(onid, tsid, sid) == 0 ? 0 : 1;
}

int demo(velmora::dtv::DvbAPIInterface& api, EventQueue& queue, Printer& printer, const std::string& path) {
    std::ifstream file(path);
    if (!file) {
        std::fprintf(stderr, "dvbshell: cannot open %s: %s\n", path.c_str(), std::strerror(errno));
        return 1;
    }
    const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    std::vector<ListedService> services;
    std::string error;
    if (!parseServiceList(text, services, error)) {
        std::fprintf(stderr, "dvbshell: %s: %s\n", path.c_str(), error.c_str());
        return 1;
    }
    return runDemo(api, queue, printer, chooseServices(services), kLongestDemo);
}

int run(Host& host, EventQueue& queue, Printer& printer, const Options& options) {
    constexpr int kLong = 5;
    constexpr int kShort = 1;
    if (options.words.empty()) {
        return runPrompt(host, queue, printer);
    }
    const std::string& verb = options.words[0];
    if (verb == "info") {
        return info(host, printer);
    }
    if (verb == "demo") {
        return demo(host.api, queue, printer, options.words[1]);
    }
    awaitChannel(host);
    if (verb == "watch") {
        return watch(host.api, queue, printer, options.seconds.value_or(kLong));
    }
    if (verb == "tune") {
        tune(host.api, options);
        return watch(host.api, queue, printer, options.seconds.value_or(kLong));
    }
    const bool good = runOperation(host, printer, options.words);
    watch(host.api, queue, printer, options.seconds.value_or(kShort));
    return good ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    const Options options = parseOptions(argc, argv);
    std::string error;
    velmora::dtv::DvbAPIInterface* const api = loadDvbApi(options.library, error);
    if (api == nullptr) {
        std::fprintf(stderr, "dvbshell: %s\n", error.c_str());
        return 1;
    }
    EventQueue queue;
    const std::unique_ptr<Printer> printer =
        options.json ? std::make_unique<JsonPrinter>(stdout) : std::make_unique<Printer>(stdout);
    Host host{*api, makeListener(queue)};
    api->addListener(host.listener);
    const int result = run(host, queue, *printer, options);
    api->removeListener(host.listener);
    return result;
}
