// Messages: a question from the browser's call to the service's handler, and its answer back to the listener, which
// asks again at once; and commands without answers. The same over a raw socket, Asio, and sd-bus peer to peer.
// The same with more listeners, and with more browsers connected.
//   NAME/cpus:N/bytes:N   one CPU for both processes or one for each; bytes of text in the answer
#include <benchmark/benchmark.h>
#include <sys/socket.h>
#include <systemd/sd-bus.h>

#include <boost/asio.hpp>
#include <memory>
#include <vector>

#include "browser.h"
#include "cpus.h"
#include "idle_browser.h"
#include "latencies.h"
#include "measure_trips.h"
#include "plain_packets.h"
#include "questions.h"
#include "raw_questions.h"

namespace {

using bench::kLargest;
using bench::kShort;
using bench::Latencies;
using bench::OnSocket;
using Raw = bench::RawQuestions;

/// The library, and a service of its own.
class Ours {
public:
    Ours(int cpu, std::size_t bytes) : questions(cpu, bytes, [this] { times.next(); }) {
        bench::pinTo(bench::kOwnCpu);
        ask(1);
    }

    void ask(std::int64_t count) {
        times.begin();
        questions.ask(count);
    }
    /// Commands without answers, and a question behind them.
    void tell(std::int64_t commands) {
        for (; commands > 1; --commands) {
            bench::dvbApi().startOSDDetection(0);
        }
        ask(1);
    }

    Latencies times;

private:
    bench::Questions questions;
};

class Asio : OnSocket {
public:
    Asio(int cpu, std::size_t bytes)
        : OnSocket("asio", SOCK_SEQPACKET, cpu, bytes), socket(context, bench::kPlainProtocol, sockets.own) {
        ask(1);
    }

    void ask(std::int64_t questions) {
        left = questions;
        times.begin();
        send();
        context.restart();
        context.run();
    }

    Latencies times;

private:
    void send() {
        socket.async_send(boost::asio::buffer(question), 0,
                          [this](const boost::system::error_code&, std::size_t) { receive(); });
    }
    void receive() {
        socket.async_receive(boost::asio::buffer(answer), flags, [this](const boost::system::error_code&, std::size_t) {
            times.next();
            if (--left > 0) {
                send();
            }
        });
    }

    boost::asio::io_context context{1};
    boost::asio::generic::seq_packet_protocol::socket socket;
    int flags = 0;
    std::int64_t left = 0;
    const std::vector<char> question = std::vector<char>(kShort, 1);
    std::vector<char> answer = std::vector<char>(kLargest);
};

class SdBus : OnSocket {
public:
    SdBus(int cpu, std::size_t bytes) : OnSocket("sd-bus", SOCK_STREAM, cpu, bytes) {
        if (sd_bus_new(&bus) < 0 || sd_bus_set_fd(bus, sockets.own, sockets.own) < 0 ||
            sd_bus_set_anonymous(bus, 1) < 0 || sd_bus_start(bus) < 0) {
            std::fprintf(stderr, "bench: no sd-bus\n");
            std::exit(1);
        }
        ask(1);
    }
    SdBus(const SdBus&) = delete;
    SdBus& operator=(const SdBus&) = delete;
    ~SdBus() { sd_bus_close_unref(bus); }

    void ask(std::int64_t questions) {
        left = questions;
        times.begin();
        call();
        while (left > 0) {
            if (sd_bus_process(bus, nullptr) == 0) {
                sd_bus_wait(bus, UINT64_MAX);
            }
        }
    }

    Latencies times;

private:
    void call() {
        sd_bus_call_method_async(bus, nullptr, nullptr, bench::kBusObject, bench::kBusInterface, "Ask", answered, this,
                                 "u", std::uint32_t{7});
    }
    static int answered(sd_bus_message* answer, void* context, sd_bus_error*) {
        auto& self = *static_cast<SdBus*>(context);
        std::uint64_t numbers[2];
        const char* text = nullptr;
        if (sd_bus_message_read(answer, "tts", &numbers[0], &numbers[1], &text) < 0) {
            std::fprintf(stderr, "bench: an answer of sd-bus is none\n");
            std::exit(1);
        }
        self.times.next();
        if (--self.left > 0) {
            self.call();
        }
        return 0;
    }

    sd_bus* bus = nullptr;
    std::int64_t left = 0;
};

using bench::measureTrips;

template <typename Transport>
void roundTrip(benchmark::State& state) {
    Transport transport(bench::cpuOfPeer(state.range(0)), static_cast<std::size_t>(state.range(1)));
    measureTrips(state, transport);
}

/// The library with more listeners, which do nothing.
void manyListeners(benchmark::State& state) {
    Ours transport(bench::cpuOfPeer(1), 0);
    std::vector<std::shared_ptr<velmora::dtv::helpers::EmptyListener>> others;
    while (static_cast<std::int64_t>(others.size()) + 1 < state.range(0)) {
        others.push_back(std::make_shared<velmora::dtv::helpers::EmptyListener>());
        bench::dvbApi().addListener(others.back());
    }
    measureTrips(state, transport);
    for (const auto& other : others) {
        bench::dvbApi().removeListener(other);
    }
}

/// The library with more browsers on the same service, which ask nothing.
void manyBrowsers(benchmark::State& state) {
    Ours transport(bench::cpuOfPeer(1), 0);
    const auto others = bench::idleBrowsers(state.range(0) - 1);
    measureTrips(state, transport);
}

/// Commands one way. A batch is no longer than what may wait for a slow service.
template <typename Transport>
void oneWay(benchmark::State& state) {
    Transport transport(bench::cpuOfPeer(state.range(0)), 0);
    constexpr std::int64_t kBatch = 10000;
    transport.tell(kBatch);
    while (state.KeepRunningBatch(kBatch)) {
        transport.tell(kBatch);
    }
}

void sizes(benchmark::internal::Benchmark* measured) {
    measured->ArgNames({"cpus", "bytes"})->ArgsProduct({{1, 2}, {0, 256, 4096}})->UseRealTime();
}
void cpus(benchmark::internal::Benchmark* measured) {
    measured->ArgName("cpus")->DenseRange(1, 2)->UseRealTime();
}

BENCHMARK_TEMPLATE(roundTrip, Ours)->Name("round_trip/ours")->Apply(sizes);
BENCHMARK_TEMPLATE(roundTrip, Raw)->Name("round_trip/raw")->Apply(sizes);
BENCHMARK_TEMPLATE(roundTrip, Asio)->Name("round_trip/asio")->Apply(sizes);
BENCHMARK_TEMPLATE(roundTrip, SdBus)->Name("round_trip/sd_bus")->Apply(sizes);
BENCHMARK(manyListeners)->Name("listeners")->ArgName("listeners")->Arg(1)->Arg(10)->Arg(100)->UseRealTime();
BENCHMARK(manyBrowsers)->Name("browsers")->ArgName("browsers")->Arg(1)->Arg(8)->Arg(64)->UseRealTime();
BENCHMARK_TEMPLATE(oneWay, Ours)->Name("one_way/ours")->Apply(cpus);
BENCHMARK_TEMPLATE(oneWay, Raw)->Name("one_way/raw")->Apply(cpus);

}  // namespace
