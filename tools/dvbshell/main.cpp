// dvbshell: a browser host for the command line. It uses the library's browser-facing headers only.
#include <getopt.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

#include "ait_link.h"
#include "demo.h"
#include "for_life.h"
#include "json_printer.h"
#include "library.h"
#include "operations.h"
#include "prompt.h"
#include "sections.h"
#include "si/tables.h"

namespace {

using namespace dvbshell;

constexpr int kUsageError = 2;

constexpr const char* kUsage =
    "usage: dvbshell [options]                       a prompt; or operations from standard input, one a line\n"
    "       dvbshell [options] watch                 print what arrives\n"
    "       dvbshell [options] tune ONID:TSID:SID    tune, and print what arrives; fails where the tune does\n"
    "       dvbshell [options] info                  print the current channel\n"
    "       dvbshell [options] OPERATION [ARGUMENT]  one operation of the DVB API, then print what arrives\n"
    "       dvbshell [options] ait [ONID:TSID:SID]   follow the AIT of the current channel, or tune first; then replay "
    "it\n"
    "       dvbshell [options] sections PID          open a filter on a PID and print what comes\n"
    "       dvbshell [options] pmt SID               print the PMT of a service\n"
    "       dvbshell [options] demo LIST             tune through the services of LIST, as dtvserviced --list prints "
    "them\n"
    "\n"
    "  --library PATH   the library; default: ../lib/libbrowserdvbapi.so beside this program\n"
    "  --seconds N      how long to print what arrives; default: 1 for an operation, 60 for sections --count, else 5\n"
    "  --id-type N      OIPF channel idType of a tune; default: 12 (DVB-T)\n"
    "  --json           print one JSON object on each line\n"
    "options of sections:\n"
    "  --table ID[/MASK]         sections with this table_id; a mask selects several\n"
    "  --match HEX --mask HEX    a pattern: byte 0 matches table_id, byte 1 the section's byte 3 and so on\n"
    "  --count N                 end after N sections\n"
    "  --hex                     print each section on one line in hexadecimal\n"
    "  --out FILE                write the bytes of all sections to FILE, without separators\n"
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
    SectionsRequest sections;
    std::string sectionOption;  ///< the first option that only `sections` takes
    std::vector<std::string> words;
};

[[noreturn]] void endWithUsage(const std::string& error) {
    std::fprintf(stderr, "dvbshell: %s\n", error.c_str());
    printUsage(stderr);
    std::exit(kUsageError);
}

int numberOf(const char* name, const char* text, unsigned int most = 86400) {
    unsigned int number = 0;
    if (!parseUnsigned(text, most, number)) {
        endWithUsage(std::string(name) + ": \"" + text + "\" is not a number from 0 to " + std::to_string(most));
    }
    return static_cast<int>(number);
}

/// A verb that is no operation of the DVB API, and how many arguments it takes.
struct Verb {
    const char* name;
    std::size_t least;
    std::size_t most;
};
constexpr Verb kVerbs[] = {{"watch", 0, 0},    {"info", 0, 0},     {"tune", 1, 1}, {"demo", 1, 1},
                           {kReplayAit, 0, 1}, {"sections", 1, 1}, {"pmt", 1, 1}};

const Verb* findVerb(const std::string& name) {
    const auto* const found =
        std::find_if(std::begin(kVerbs), std::end(kVerbs), [&name](const Verb& verb) { return name == verb.name; });
    return found == std::end(kVerbs) ? nullptr : found;
}

void checkArgument(Options& options) {
    constexpr unsigned int kMostPid = 0x1FFF;
    constexpr unsigned int kMostSid = 0xFFFF;
    const std::string& verb = options.words[0];
    const std::string& argument = options.words[1];
    Triplet triplet;
    if ((verb == "tune" || verb == kReplayAit) && !parseTriplet(argument, triplet)) {
        endWithUsage(verb + ": \"" + argument + "\" is not ONID:TSID:SID, each from 0 to 65535");
    }
    if (verb == "sections") {
        options.sections.pid = static_cast<unsigned int>(numberOf("PID", argument.c_str(), kMostPid));
    } else if (verb == "pmt") {
        options.sections.pid = static_cast<unsigned int>(numberOf("SID", argument.c_str(), kMostSid));
        options.sections.pmtOfService = true;
        options.sections.count = 1;
    }
}

/// Ends the program when the words are not a command. This needs no library, so it runs before the library loads.
void checkWords(Options& options) {
    const std::string name = options.words.empty() ? std::string() : options.words[0];
    if (!options.sectionOption.empty() && name != "sections") {
        endWithUsage(options.sectionOption + " is an option of sections");
    }
    if (name.empty()) {
        return;
    }
    const std::size_t arguments = options.words.size() - 1;
    if (const Verb* const verb = findVerb(name)) {
        if (arguments < verb->least || arguments > verb->most) {
            endWithUsage(name + (verb->most == 0    ? " takes no argument"
                                 : verb->least == 0 ? " takes one argument or none"
                                                    : " takes one argument"));
        }
        if (arguments != 0) {
            checkArgument(options);
        }
        return;
    }
    const Operation* const operation = findOperation(name);
    Values values;
    std::string error = "unknown command " + name;
    if (operation == nullptr ||
        !parseValues(*operation, {options.words.begin() + 1, options.words.end()}, values, error)) {
        endWithUsage(error);
    }
}

enum OptionId { kLibrary = 1, kSeconds, kIdType, kJson, kHelp, kTable, kMatch, kMask, kCount, kHex, kOut };

constexpr option kOptions[] = {{"library", required_argument, nullptr, kLibrary},
                               {"seconds", required_argument, nullptr, kSeconds},
                               {"id-type", required_argument, nullptr, kIdType},
                               {"json", no_argument, nullptr, kJson},
                               {"help", no_argument, nullptr, kHelp},
                               {"table", required_argument, nullptr, kTable},
                               {"match", required_argument, nullptr, kMatch},
                               {"mask", required_argument, nullptr, kMask},
                               {"count", required_argument, nullptr, kCount},
                               {"hex", no_argument, nullptr, kHex},
                               {"out", required_argument, nullptr, kOut},
                               {}};

std::string hexOption(const char* name, const char* text) {
    std::string bytes;
    if (!parseHex(text, bytes)) {
        endWithUsage(std::string(name) + ": \"" + text + "\" is not bytes in hexadecimal");
    }
    return bytes;
}

void takeSectionOption(int id, Options& options, std::string& table) {
    SectionsRequest& request = options.sections;
    switch (id) {
        case kTable:
            table = optarg;
            break;
        case kMatch:
            request.match = hexOption("--match", optarg);
            break;
        case kMask:
            request.mask = hexOption("--mask", optarg);
            break;
        case kCount:
            request.count = static_cast<unsigned int>(numberOf("--count", optarg, 1000000000));
            break;
        case kHex:
            request.show = SectionsRequest::Show::hexadecimal;
            break;
        default:
            request.show = SectionsRequest::Show::file;
            request.path = optarg;
    }
    if (options.sectionOption.empty()) {
        options.sectionOption = std::string("--") + kOptions[id - 1].name;
    }
}

/// Match and mask must have the same length; --table adds the table_id in front of both.
void finishPattern(Options& options, const std::string& table) {
    SectionsRequest& request = options.sections;
    if (request.match.size() != request.mask.size()) {
        endWithUsage("--match has " + std::to_string(request.match.size()) + " bytes, --mask " +
                     std::to_string(request.mask.size()));
    }
    if (!table.empty() && !setTable(table, request)) {
        endWithUsage("--table: \"" + table + "\" is not ID or ID/MASK, each from 0 to 255");
    }
}

void takeOption(int id, Options& options, std::string& table) {
    switch (id) {
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
        default:
            takeSectionOption(id, options, table);
    }
}

/// Moves options to the front, because they may stand anywhere. A word with a single dash is an argument, for example a
/// negative number.
std::vector<char*> optionsFirst(int argc, char** argv) {
    std::vector<char*> first(argv, argv + 1);
    std::vector<char*> words;
    for (int index = 1; index < argc; ++index) {
        const std::string word = argv[index];
        if (word.rfind("--", 0) != 0) {
            words.push_back(argv[index]);
            continue;
        }
        first.push_back(argv[index]);
        for (const option* known = kOptions; known->name != nullptr; ++known) {
            if (word == std::string("--") + known->name && known->has_arg == required_argument && index + 1 < argc) {
                first.push_back(argv[++index]);
            }
        }
    }
    first.insert(first.end(), words.begin(), words.end());
    return first;
}

Options parseOptions(int argc, char** argv) {
    Options options;
    std::string table;
    std::vector<char*> ordered = optionsFirst(argc, argv);
    ordered.push_back(nullptr);
    opterr = 0;
    for (int id = 0; (id = getopt_long(argc, ordered.data(), "+:", kOptions, nullptr)) != -1;) {
        if (id == ':') {
            endWithUsage(std::string(ordered[static_cast<std::size_t>(optind) - 1]) + " needs a value");
        }
        if (id == '?') {
            endWithUsage(std::string("unknown option ") + ordered[static_cast<std::size_t>(optind) - 1]);
        }
        takeOption(id, options, table);
    }
    options.words.assign(ordered.begin() + optind, ordered.end() - 1);
    finishPattern(options, table);
    checkWords(options);
    return options;
}

int watch(velmora::dtv::DvbAPIInterface& api, EventQueue& queue, Printer& printer, int seconds) {
    const Clock::time_point end = Clock::now() + std::chrono::seconds(seconds);
    while (const std::optional<Event> event = queue.take(end)) {
        printer.print(*event, api.getCurrentCCID());
    }
    return 0;
}

Triplet startTune(velmora::dtv::DvbAPIInterface& api, const Options& options) {
    Triplet triplet;
    parseTriplet(options.words[1], triplet);
    api.tuneToService(options.idType, triplet.onid, triplet.tsid, triplet.sid, 0);
    return triplet;
}

/// Whether an event belongs to the channel. While the broadcast has not announced its network, any original_network_id
/// matches.
bool isThat(const Event& event, const Triplet& channel) {
    return (event.onid == channel.onid || event.onid == si::kUnknownNetworkId) && event.tsid == channel.tsid &&
           event.sid == channel.sid;
}

/// Returns 0 when the wanted channel has started.
int tune(Host& host, EventQueue& queue, Printer& printer, const Options& options, Clock::time_point end) {
    const Triplet wanted = startTune(host.api, options);
    bool tuned = false;
    while (const std::optional<Event> event = queue.take(end)) {
        printer.print(*event, host.api.getCurrentCCID());
        tuned = tuned || (event->kind == EventKind::channel && event->started && isThat(*event, wanted));
    }
    if (!tuned) {
        printer.note("not tuned to " + tripletText(wanted));
    }
    return tuned ? 0 : 1;
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

int demo(Host& host, EventQueue& queue, Printer& printer, const std::string& path) {
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
    const auto replay = [&host](const Triplet& channel) {
        host.ait->replay(static_cast<std::uint16_t>(channel.onid), static_cast<std::uint16_t>(channel.tsid),
                         static_cast<std::uint16_t>(channel.sid));
    };
    return runDemo(host.api, queue, printer, chooseServices(services), replay, kLongestDemo);
}

/// Prints events until the AIT has arrived and no event follows for a moment, then asks for the stored AIT.
int ait(Host& host, EventQueue& queue, Printer& printer, const Options& options, Clock::time_point end) {
    constexpr std::chrono::milliseconds kQuiet{500};
    std::optional<Triplet> wanted;
    if (options.words.size() == 2) {
        wanted = startTune(host.api, options);
    } else {
        // The service sends each AIT section once, so ask for them again.
        host.api.triggerAitRestart();
    }
    bool came = false;
    Clock::time_point until = end;
    while (const std::optional<Event> event = queue.take(until)) {
        printer.print(*event, host.api.getCurrentCCID());
        // The AIT of the previous channel may arrive first.
        came = came || (event->kind == EventKind::application && (!wanted || isThat(*event, *wanted)));
        until = came ? std::min(end, Clock::now() + kQuiet) : end;
    }
    if (!came) {
        printer.note("no AIT came");
        return 1;
    }
    printer.note("from memory:");
    const bool asked = replayAit(host, printer, options.words);
    while (const std::optional<Event> event = queue.take(Clock::now() + kQuiet)) {
        printer.print(*event, host.api.getCurrentCCID());
    }
    return asked ? 0 : 1;
}

int sections(const Options& options, Printer& printer) {
    constexpr int kSeconds = 5;
    constexpr int kSecondsOfCount = 60;
    SectionsRequest request = options.sections;
    const bool counted = request.count && !request.pmtOfService;
    request.longest = std::chrono::seconds(options.seconds.value_or(counted ? kSecondsOfCount : kSeconds));
    return runSections(options.library, request, printer);
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
        return demo(host, queue, printer, options.words[1]);
    }
    awaitChannel(host);
    if (verb == "sections" || verb == "pmt") {
        return sections(options, printer);
    }
    if (verb == kReplayAit) {
        return ait(host, queue, printer, options, Clock::now() + std::chrono::seconds(options.seconds.value_or(kLong)));
    }
    if (verb == "watch") {
        return watch(host.api, queue, printer, options.seconds.value_or(kLong));
    }
    if (verb == "tune") {
        return tune(host, queue, printer, options,
                    Clock::now() + std::chrono::seconds(options.seconds.value_or(kLong)));
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
    // Events may arrive at any time, so the queue lives as long as the process.
    EventQueue& queue = forLife(new EventQueue);
    AitLink* const link = api == nullptr ? nullptr : AitLink::load(options.library, queue, error);
    if (api == nullptr || link == nullptr) {
        std::fprintf(stderr, "dvbshell: %s\n", error.c_str());
        return 1;
    }
    const std::unique_ptr<Printer> printer =
        options.json ? std::make_unique<JsonPrinter>(stdout) : std::make_unique<Printer>(stdout);
    Host host{*api, makeListener(queue, link), link};
    api->addListener(host.listener);
    const int result = run(host, queue, *printer, options);
    api->removeListener(host.listener);
    return result;
}
