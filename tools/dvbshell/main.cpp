// dvbshell: a browser host for the command line. It knows the library by its browser-facing headers alone.
#include <getopt.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>

#include "demo.h"
#include "library.h"

namespace {

using namespace dvbshell;

constexpr int kUsageError = 2;

constexpr const char* kUsage =
    "usage: dvbshell [options] watch              print what arrives\n"
    "       dvbshell [options] tune ONID:TSID:SID  tune, and print what arrives\n"
    "       dvbshell [options] info               print the current channel\n"
    "       dvbshell [options] demo LIST          tune through the services of LIST, as dtvserviced --list prints "
    "them\n"
    "\n"
    "  --library PATH   the library; ../lib/libbrowserdvbapi.so beside this program unless given\n"
    "  --seconds N      how long watch and tune print; 5 unless given\n"
    "  --id-type N      OIPF's channel idType of a tune; 12 (DVB-T) unless given\n";

struct Options {
    std::string library = defaultLibraryPath();
    int seconds = 5;
    int idType = 12;
    std::string verb;
    std::string argument;
};

[[noreturn]] void endWithUsage(const std::string& error) {
    std::fprintf(stderr, "dvbshell: %s\n%s", error.c_str(), kUsage);
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

Options parseOptions(int argc, char** argv) {
    enum { kLibrary = 1, kSeconds, kIdType, kHelp };
    static const option kOptions[] = {{"library", required_argument, nullptr, kLibrary},
                                      {"seconds", required_argument, nullptr, kSeconds},
                                      {"id-type", required_argument, nullptr, kIdType},
                                      {"help", no_argument, nullptr, kHelp},
                                      {}};
    Options options;
    opterr = 0;
    while (true) {
        const int found = getopt_long(argc, argv, ":", kOptions, nullptr);
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
            case kHelp:
                std::fputs(kUsage, stdout);
                std::exit(0);
            case ':':
                endWithUsage(std::string(argv[optind - 1]) + " needs a value");
            default:
                endWithUsage(std::string("unknown option ") + argv[optind - 1]);
        }
    }
    const std::vector<std::string> words(argv + optind, argv + argc);
    if (words.empty()) {
        endWithUsage("nothing to do");
    }
    options.verb = words[0];
    const bool takesArgument = options.verb == "tune" || options.verb == "demo";
    if (!takesArgument && options.verb != "watch" && options.verb != "info") {
        endWithUsage("unknown command " + options.verb);
    }
    if (words.size() != (takesArgument ? 2U : 1U)) {
        endWithUsage(options.verb + (takesArgument ? " takes one argument" : " takes no argument"));
    }
    options.argument = takesArgument ? words[1] : "";
    return options;
}

int watch(velmora::dtv::DvbAPIInterface& api, EventQueue& queue, Printer& printer, int seconds) {
    const Clock::time_point end = Clock::now() + std::chrono::seconds(seconds);
    while (const std::optional<Event> event = queue.take(end)) {
        printer.print(*event, api.getCurrentCCID());
    }
    return 0;
}

int tune(velmora::dtv::DvbAPIInterface& api, EventQueue& queue, Printer& printer, const Options& options) {
    Triplet triplet;
    if (!parseTriplet(options.argument, triplet)) {
        endWithUsage("tune: \"" + options.argument + "\" is not ONID:TSID:SID, each from 0 to 65535");
    }
    api.tuneToService(options.idType, triplet.onid, triplet.tsid, triplet.sid, 0);
    return watch(api, queue, printer, options.seconds);
}

int info(velmora::dtv::DvbAPIInterface& api, EventQueue& queue, Printer& printer) {
    // The first query asks the DTV service for the channel; its answer is no event of the listener's.
    int onid = 0;
    int tsid = 0;
    int sid = 0;
    const Clock::time_point end = Clock::now() + std::chrono::seconds(1);
    while (api.getCurrentChannelInfo(onid, tsid, sid) != 0 && Clock::now() < end) {
        queue.take(Clock::now() + std::chrono::milliseconds(20));
    }
    printer.note("channel  " + api.getCurrentCCID());
    printer.note("dsd      " + std::to_string(api.getCurrentDsd().size()) + " bytes");
    return api.getCurrentChannelInfo(onid, tsid, sid) == 0 ? 0 : 1;
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
    return runDemo(api, queue, printer, chooseServices(services));
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
    Printer printer(stdout);
    const std::shared_ptr<velmora::dtv::DVBServiceListener> listener = makeListener(queue);
    api->addListener(listener);
    int result = 0;
    if (options.verb == "tune") {
        result = tune(*api, queue, printer, options);
    } else if (options.verb == "info") {
        result = info(*api, queue, printer);
    } else if (options.verb == "demo") {
        result = demo(*api, queue, printer, options.argument);
    } else {
        api->getCurrentCCID();
        result = watch(*api, queue, printer, options.seconds);
    }
    api->removeListener(listener);
    return result;
}
