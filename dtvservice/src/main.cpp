// dtvserviced: the reference DTV service. Plays transport streams from files and live inputs, and answers browsers.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <list>
#include <new>
#include <string_view>

#include "command_line/output.h"
#include "command_line/standard_descriptors.h"
#include "http_server.h"
#include "input_watch.h"
#include "live_input.h"
#include "operator_server.h"
#include "options.h"
#include "replaying.h"
#include "running.h"
#include "scan.h"
#include "stream_room.h"
#include "text/printable.h"

namespace {

using dtvservice::Options;

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
    const dtvservice::Scan scan(*file);
    const broadcast::SiDatabase& database = scan.tables();
    if (database.channels().empty()) {
        std::fprintf(stderr, "dtvserviced: %s: no service: there is no PAT in the file, or it lists none\n",
                     path.c_str());
        return 1;
    }
    for (const broadcast::Channel& channel : database.channels()) {
        std::printf(
            "%s\t%s\t%s\t%s\n", channel.triplet().c_str(), database.pmt(channel.serviceId).empty() ? "nopmt" : "pmt",
            database.signalsHbbTv(channel.serviceId) ? "hbbtv" : "no-hbbtv", text::printable(channel.name).c_str());
    }
    return 0;
}

/// Scenarios stop the service for its browsers, and start it again.
dtvservice::Transport ownTransport(dtvservice::Core& core) {
    return {&dtvservice::stopTakingBrowsers,
            [&core] { return dtvservice::startTakingBrowsers(core.commands, core.browsers) >= 0; }};
}

/// An input that is a file, opened; null for a live input or for a file that cannot be opened, with the reason.
struct OpenedFile {
    std::unique_ptr<dtvservice::PacketFile> file;
    std::string problem;
};

/// One entry for each input. Ends the process if every input is a file and none can be opened.
std::vector<OpenedFile> openFiles(const std::vector<dtvservice::InputName>& inputs) {
    std::vector<OpenedFile> files(inputs.size());
    std::size_t failed = 0;
    for (std::size_t index = 0; index < inputs.size(); ++index) {
        if (inputs[index].isFile()) {
            files[index].file = dtvservice::PacketFile::open(inputs[index].path, files[index].problem);
            failed += files[index].problem.empty() ? 0 : 1;
        }
    }
    const bool isOver = failed == inputs.size();
    for (const OpenedFile& file : files) {
        if (!file.problem.empty()) {
            std::fprintf(stderr, "dtvserviced: %s%s\n", file.problem.c_str(),
                         isOver ? "" : "; trying again every second");
        }
    }
    if (isOver) {
        std::exit(1);
    }
    return files;
}

using command_line::say;

void sayInputs(const std::vector<dtvservice::InputName>& inputs) {
    std::string line = "ready: playing";
    for (std::size_t index = 0; index < inputs.size(); ++index) {
        say("input " + std::to_string(index + 1) + ": " + inputs[index].text);
        line += " " + inputs[index].text;
    }
    dtvservice::sayHowToConnect();
    say(line);
}

using Ask = std::function<std::function<std::string()>(const std::string& request)>;

/// The HTTP server, if it is wanted. Ends the process if it cannot listen.
std::unique_ptr<dtvservice::HttpServer> serveHttp(const Options& options, dtvservice::EventLoop& loop, const Ask& ask,
                                                  dtvservice::StreamRoom* stream) {
    if (!options.http) {
        return nullptr;
    }
    auto server = std::make_unique<dtvservice::HttpServer>(
        *options.http, loop,
        dtvservice::HttpServer::Service{
            ask, [stream](std::shared_ptr<dtvservice::PacketQueue> reader) { stream->join(std::move(reader)); }});
    if (!server->error().empty()) {
        std::fprintf(stderr, "dtvserviced: --http: %s\n", server->error().c_str());
        std::exit(1);
    }
    const std::string address = server->address().text();
    if (!server->address().isLoopback()) {
        std::fprintf(stderr, "dtvserviced: warning: everyone who reaches %s gets the stream, without a password\n",
                     address.c_str());
    }
    say("stream: http://" + address + "/stream.ts");
    return server;
}

/// The room of the stream, if there is an HTTP server to give it away.
dtvservice::StreamRoom* addStreamRoom(const Options& options, dtvservice::Core& core) {
    if (!options.http) {
        return nullptr;
    }
    auto room = std::make_unique<dtvservice::StreamRoom>(core);
    dtvservice::StreamRoom* const added = room.get();
    core.add(std::move(room));
    return added;
}

int serve(const Options& options) {
    std::vector<OpenedFile> files = openFiles(options.inputs);
    dtvservice::EventLoop loop;
    const dtvservice::SignalWaiter signals(loop);
    dtvservice::Core core(loop);
    if (options.application) {
        core.application.emplace(*options.application);
    }
    dtvservice::Settings settings = options.settings;
    settings.transport = ownTransport(core);
    dtvservice::addRooms(core, settings);
    dtvservice::StreamRoom* const stream = addStreamRoom(options, core);
    std::vector<dtvservice::Playback> playbacks;
    std::vector<std::pair<dtvservice::InputName, dtvservice::Multiplex*>> live;
    for (std::size_t index = 0; index < files.size(); ++index) {
        const dtvservice::InputName& input = options.inputs[index];
        dtvservice::Multiplex& multiplex = core.addMultiplex();
        multiplex.report.setSource(input.text);
        if (!files[index].problem.empty()) {
            multiplex.report.failed(files[index].problem);
        }
        if (input.isFile()) {
            playbacks.emplace_back(input.path, std::move(files[index].file), multiplex.demux, multiplex.report,
                                   options.playing);
        } else {
            live.emplace_back(input, &multiplex);
        }
    }
    if (!dtvservice::takeBrowsers(core.commands, core.browsers)) {
        return 1;
    }
    const Ask ask = [&core](const std::string& request) { return core.requests.begin(request); };
    const dtvservice::OperatorServer operators(control::defaultSocketPath(), loop, core.tap, ask);
    if (!operators.error().empty()) {
        std::fprintf(stderr, "dtvserviced: cannot take operators: %s\n", operators.error().c_str());
    }
    std::list<dtvservice::LiveInput> inputs;
    for (const auto& [input, multiplex] : live) {
        inputs.emplace_back(input, loop, multiplex->demux, multiplex->report, options.playing.bitRate);
    }
    const std::unique_ptr<dtvservice::HttpServer> http = serveHttp(options, loop, ask, stream);
    sayInputs(options.inputs);
    dtvservice::InputWatch watch(loop, core.multiplexes, say);
    watch.start();
    dtvservice::play(playbacks, loop, live.empty() ? dtvservice::Others::none : dtvservice::Others::live);
    dtvservice::stopTakingBrowsers();
    return 0;
}

/// Without memory the service cannot keep its state right. It ends at once; its browsers connect to the next one.
[[noreturn]] void endWithoutMemory() {
    constexpr std::string_view kLine = "dtvserviced: no memory is left\n";
    if (command_line::hasRoom(STDERR_FILENO)) {
        [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, kLine.data(), kLine.size());
    }
    _exit(1);
}

}  // namespace

int main(int argc, char** argv) {
    command_line::keepStandardDescriptors();
    // Far more than a browser needs, and few enough that one which sends without end does not delay the others.
    setenv("DTV_CLIENT_RATE", "2000", 0);
    std::set_new_handler(&endWithoutMemory);
    command_line::checkOutputAtExit("dtvserviced");
    const Options options = dtvservice::parseOptions(argc, argv);
    try {
        return !options.replay.file.empty() ? dtvservice::replay(options.replay)
               : options.list.empty()       ? serve(options)
                                            : list(options.list);
    } catch (const std::system_error& error) {
        std::fprintf(stderr, "dtvserviced: the system gives no thread: %s\n", error.what());
        return 1;
    }
}
