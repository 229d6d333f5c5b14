// The start of a browser: from dlopen of the library to the first command sent, beside the connection of a raw socket;
// and the memory that the library takes. Each figure is one of a process of its own.
#include <benchmark/benchmark.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "browser.h"
#include "cpus.h"
#include "peer.h"

namespace {

/// The figure that the browser prints; negative if it fails.
double figureOf(const std::string& what, const std::string& path) {
    const std::string command =
        bench::ownFolder() + "/starting_browser " + std::to_string(bench::kOwnCpu) + " " + what + " " + path;
    std::FILE* const output = popen(command.c_str(), "r");
    double figure = -1;
    if (output == nullptr || std::fscanf(output, "%lf", &figure) != 1 || pclose(output) != 0) {
        return -1;
    }
    return figure;
}

std::string libraryPath() {
    return bench::ownFolder() + "/../lib/libbrowserdvbapi.so";
}

/// Takes connections, and does nothing with them.
class RawListener {
public:
    RawListener() : path(bench::runDirectory() + "/raw"), listener(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
        if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
            listen(listener, SOMAXCONN) != 0) {
            std::perror("bench: a raw socket");
            std::exit(1);
        }
    }
    RawListener(const RawListener&) = delete;
    RawListener& operator=(const RawListener&) = delete;
    ~RawListener() {
        close(listener);
        unlink(path.c_str());
    }
    void forgetOne() const { close(accept(listener, nullptr, nullptr)); }

    const std::string path;

private:
    const int listener;
};

void ours(benchmark::State& state) {
    const bench::Peer service("answering_service", {std::to_string(bench::cpuOfPeer(2)), "0"});
    figureOf("time", libraryPath());  // waits for the service
    while (state.KeepRunning()) {
        const double microseconds = figureOf("time", libraryPath());
        if (microseconds < 0) {
            state.SkipWithError("a browser has not started");
            return;
        }
        state.SetIterationTime(microseconds / 1e6);
    }
}

void raw(benchmark::State& state) {
    const RawListener listener;
    while (state.KeepRunning()) {
        const double microseconds = figureOf("raw", listener.path);
        if (microseconds < 0) {
            state.SkipWithError("nothing has connected");
            return;
        }
        listener.forgetOne();
        state.SetIterationTime(microseconds / 1e6);
    }
}

void memory(benchmark::State& state) {
    const bench::Peer service("answering_service", {std::to_string(bench::cpuOfPeer(2)), "0"});
    while (state.KeepRunning()) {
        const double kib = figureOf("memory", libraryPath());
        if (kib < 0) {
            state.SkipWithError("a browser has not started");
            return;
        }
        state.counters["kib"] = kib;
    }
}

constexpr int kStarts = 5;

BENCHMARK(ours)->Name("start/ours")->UseManualTime()->Iterations(kStarts);
BENCHMARK(raw)->Name("start/raw")->UseManualTime()->Iterations(kStarts);
BENCHMARK(memory)->Name("start/memory")->Iterations(1);

}  // namespace
