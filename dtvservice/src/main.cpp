// dtvserviced: the reference DTV service. Plays transport streams from files and live inputs, and answers browsers.
#include <getopt.h>
#include <signal.h>

#include <cstdio>
#include <cstdlib>
#include <list>
#include <thread>

#include "dvb_source.h"
#include "frame/process.h"
#include "live_input.h"
#include "operator_server.h"
#include "player.h"
#include "rooms.h"
#include "si/printable.h"

namespace {

constexpr int kUsageError = 2;

constexpr const char* kUsage =
    "usage: dtvserviced --input INPUT... [OPTION]...  play and answer browsers\n"
    "       dtvserviced --list FILE                   print the services of FILE and end\n"
    "\n"
    "  --input INPUT  a transport stream. With several inputs each is a multiplex, and tuning switches between them:\n"
    "                   FILE or file:FILE   played in a loop at the pace of its PCR; may be compressed with gzip\n"
    "                   -                   standard input, at the pace of its PCR\n"
    "                   udp://[@]HOST:PORT  datagrams, unicast or multicast; HOST is a numeric address or empty;\n"
    "                   rtp://[@]HOST:PORT  the same with RTP; ?interface=ADDRESS selects a multicast group's "
    "interface\n"
    "                   dvb://ADAPTER[/FRONTEND]?delivery_system=DVBC/ANNEX_A&frequency=346000000&...\n"
    "                                       a DVB adapter; names and values are libdvbv5's; lnb=NAME selects an LNB\n"
    "                 Packets have 188, 192 or 204 bytes.\n"
    "  --once         play each file once; end after the last one unless there are other inputs\n"
    "  --serial-number TEXT   the serial number for video on demand that browsers get; default: empty\n"
    "  --list FILE    print one line per service, separated by tabs: onid:tsid:sid, pmt or nopmt, hbbtv or no-hbbtv,\n"
    "                 name; onid is 65535 if the file does not give it\n";

struct Options {
    std::vector<dtvservice::InputName> inputs;
    std::string list;
    dtvservice::Settings settings;
    dtvservice::Repeat repeat = dtvservice::Repeat::forever;
};

[[noreturn]] void endWithUsage(const std::string& error) {
    std::fprintf(stderr, "dtvserviced: %s\n%s", error.c_str(), kUsage);
    std::exit(kUsageError);
}

dtvservice::InputName inputOrEnd(const char* text) {
    std::string error;
    std::optional<dtvservice::InputName> input = dtvservice::parseInput(text, error);
    if (input && input->kind == dtvservice::InputName::Kind::dvb) {
        error = dtvservice::checkDvb(*input);
    }
    if (!error.empty()) {
        endWithUsage(error);
    }
    return *input;
}

Options parseOptions(int argc, char** argv) {
    enum { kInput = 1, kList, kOnce, kSerialNumber, kHelp };
    static const option kOptions[] = {
        {"input", required_argument, nullptr, kInput}, {"list", required_argument, nullptr, kList},
        {"once", no_argument, nullptr, kOnce},         {"serial-number", required_argument, nullptr, kSerialNumber},
        {"help", no_argument, nullptr, kHelp},         {}};
    Options options;
    opterr = 0;
    while (true) {
        const int found = getopt_long(argc, argv, ":", kOptions, nullptr);
        if (found == -1) {
            break;
        }
        switch (found) {
            case kInput:
                options.inputs.push_back(inputOrEnd(optarg));
                break;
            case kList:
                options.list = optarg;
                break;
            case kOnce:
                options.repeat = dtvservice::Repeat::once;
                break;
            case kSerialNumber:
                options.settings.serialNumber = optarg;
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
    if (optind < argc) {
        endWithUsage(std::string("unexpected argument ") + argv[optind]);
    }
    if (options.inputs.empty() == options.list.empty()) {
        endWithUsage("one of --input and --list is needed");
    }
    return options;
}

std::unique_ptr<dtvservice::PacketFile> openOrEnd(const std::string& path) {
    std::string error;
    std::unique_ptr<dtvservice::PacketFile> file = dtvservice::PacketFile::open(path, error);
    if (!file) {
        std::fprintf(stderr, "dtvserviced: %s\n", error.c_str());
        std::exit(1);
    }
    return file;
}

int list(const std::string& path) {
    const std::unique_ptr<dtvservice::PacketFile> file = openOrEnd(path);
    broadcast::Demux demux;
    class : public broadcast::SiListener {
        void onChannelList(const broadcast::SiDatabase&) override {}
        void onPmt(const broadcast::SiDatabase&, std::uint16_t, const broadcast::Section&, bool) override {}
        void onEit(const broadcast::SiDatabase&, std::uint16_t, const broadcast::Section&, bool) override {}
        void onAit(const broadcast::SiDatabase&, std::uint16_t, const broadcast::Section&, bool) override {}
    } nobody;
    const broadcast::SiDatabase database(demux, nobody);
    dtvservice::scan(*file, demux);
    if (database.channels().empty()) {
        std::fprintf(stderr, "dtvserviced: %s: no service: there is no PAT in the file, or it lists none\n",
                     path.c_str());
        return 1;
    }
    for (const broadcast::Channel& channel : database.channels()) {
        std::printf(
            "%s\t%s\t%s\t%s\n", channel.triplet().c_str(), database.pmt(channel.serviceId).empty() ? "nopmt" : "pmt",
            database.signalsHbbTv(channel.serviceId) ? "hbbtv" : "no-hbbtv", si::printable(channel.name).c_str());
    }
    return 0;
}

dtvservice::Core* theCore = nullptr;

/// Called by the process model to make the process's members. There is one: the stub, which passes commands to the
/// core.
frame::AbstractApplication** createServiceStub() {
    auto** const members =
        static_cast<frame::AbstractApplication**>(std::calloc(2, sizeof(frame::AbstractApplication*)));
    auto* const stub = new lo::browserdvbservice::ServiceStub(theCore->commands);
    theCore->browsers.connect(*stub);
    members[0] = stub;
    return members;
}

/// SIGINT and SIGTERM stop the loop. All threads block them, and a thread of their own waits for them. SIGUSR1 ends
/// this thread.
class SignalWaiter {
public:
    explicit SignalWaiter(dtvservice::EventLoop& loop) {
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
    SignalWaiter(const SignalWaiter&) = delete;
    SignalWaiter& operator=(const SignalWaiter&) = delete;
    ~SignalWaiter() {
        pthread_kill(thread.native_handle(), SIGUSR1);
        thread.join();
    }

private:
    sigset_t signals{};
    std::thread thread;
};

/// Opens the inputs that are files: one entry for each input, null for a live input or for a file that cannot be
/// opened. Ends the process if every input is a file and none can be opened.
std::vector<std::unique_ptr<dtvservice::PacketFile>> openFiles(const std::vector<dtvservice::InputName>& inputs) {
    std::vector<std::unique_ptr<dtvservice::PacketFile>> files;
    std::vector<std::string> problems;
    for (const dtvservice::InputName& input : inputs) {
        std::string problem;
        files.push_back(input.isFile() ? dtvservice::PacketFile::open(input.path, problem) : nullptr);
        if (!problem.empty()) {
            problems.push_back(problem);
        }
    }
    const bool isOver = problems.size() == inputs.size();
    for (const std::string& problem : problems) {
        std::fprintf(stderr, "dtvserviced: %s%s\n", problem.c_str(), isOver ? "" : "; trying again every second");
    }
    if (isOver) {
        std::exit(1);
    }
    return files;
}

int serve(const Options& options) {
    std::vector<std::unique_ptr<dtvservice::PacketFile>> files = openFiles(options.inputs);
    dtvservice::EventLoop loop;
    const SignalWaiter signals(loop);
    dtvservice::Core core(loop);
    dtvservice::addRooms(core, options.settings);
    std::vector<dtvservice::Playback> playbacks;
    std::vector<std::pair<dtvservice::InputName, broadcast::Demux*>> live;
    for (std::size_t index = 0; index < files.size(); ++index) {
        broadcast::Demux& demux = core.addMultiplex().demux;
        if (options.inputs[index].isFile()) {
            playbacks.emplace_back(options.inputs[index].path, std::move(files[index]), demux, options.repeat);
        } else {
            live.emplace_back(options.inputs[index], &demux);
        }
    }
    theCore = &core;
    frame::Process process = frame::Process::getInstance();
    const int started = process.startAppMembersSync(createServiceStub);
    if (started < 0) {
        std::fprintf(stderr, "dtvserviced: cannot take browsers (%d); the log says why\n", started);
        return 1;
    }
    const dtvservice::OperatorServer operators(control::defaultSocketPath(), loop, [&core](const std::string& request) {
        return core.requests.answer(request);
    });
    if (!operators.error().empty()) {
        std::fprintf(stderr, "dtvserviced: cannot take operators: %s\n", operators.error().c_str());
    }
    std::printf("ready: playing");
    for (const dtvservice::InputName& input : options.inputs) {
        std::printf(" %s", input.text.c_str());
    }
    std::printf("\n");
    std::fflush(stdout);
    std::list<dtvservice::LiveInput> inputs;
    for (const auto& [input, demux] : live) {
        inputs.emplace_back(input, loop, *demux);
    }
    dtvservice::play(playbacks, loop, live.empty() ? dtvservice::Others::none : dtvservice::Others::live);
    process.stopAppMembers();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const Options options = parseOptions(argc, argv);
    return options.list.empty() ? serve(options) : list(options.list);
}
