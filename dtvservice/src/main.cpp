// dtvserviced: the reference DTV service. Plays transport streams from files and live inputs, and answers browsers.
#include <signal.h>

#include <cstdio>
#include <cstdlib>
#include <list>
#include <thread>

#include "command_line.h"
#include "command_line/arguments.h"
#include "dvb_source.h"
#include "frame/process.h"
#include "live_input.h"
#include "operator_server.h"
#include "player.h"
#include "rooms.h"
#include "si/printable.h"

namespace {

struct Options {
    std::vector<dtvservice::InputName> inputs;
    std::string list;
    dtvservice::Settings settings;
    dtvservice::Repeat repeat = dtvservice::Repeat::forever;
};

[[noreturn]] void endWithUsage(const std::string& error) {
    command_line::endWithUsageError(dtvservice::commandLine(), error);
}

dtvservice::InputName inputOrEnd(const std::string& text) {
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
    const command_line::Arguments arguments = command_line::parseOrEnd(dtvservice::commandLine(), argc, argv);
    Options options;
    for (const std::string& input : arguments.values("input")) {
        options.inputs.push_back(inputOrEnd(input));
    }
    options.list = arguments.value("list").value_or("");
    options.settings.serialNumber = arguments.value("serial-number").value_or("");
    options.repeat = arguments.has("once") ? dtvservice::Repeat::once : dtvservice::Repeat::forever;
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
