// What a monitor of the bus costs: a command to the reference service and its event, all on one CPU, without a monitor
// and with one, which writes all to a file on the other CPU. And what the tap costs when nobody watches.
#include <benchmark/benchmark.h>
#include <dvb_helpers/empty_listener.h>

#include <filesystem>
#include <memory>
#include <optional>

#include "browser.h"
#include "bus_tap.h"
#include "countdown.h"
#include "cpus.h"
#include "latencies.h"
#include "measure_trips.h"
#include "peer.h"
#include "reference_service.h"

namespace {

using bench::Latencies;

/// Not the layer that the wait for the service asks for.
constexpr std::uint32_t kLayer = 7;

/// Asks for a layer's state again in each answer.
class Asker final : public velmora::dtv::helpers::EmptyListener {
public:
    void ask(std::int64_t questions, Latencies& newTimes) {
        left = questions;
        times = &newTimes;
        times->begin();
        bench::dvbApi().startOSDDetection(kLayer);
        allAnswered.wait();
    }

private:
    void onOSDStateChanged(std::uint32_t layer, std::uint32_t) override {
        if (layer != kLayer) {
            return;
        }
        times->next();
        if (--left == 0) {
            allAnswered.end();
        } else {
            bench::dvbApi().startOSDDetection(kLayer);
        }
    }

    std::int64_t left = 0;
    Latencies* times = nullptr;
    bench::Countdown allAnswered;
};

/// dtvmon, which has got what a new monitor gets first.
class Monitor {
public:
    Monitor() : process((std::filesystem::remove(path()), bench::pinTo(0), "dtvmon"), {"--write", path()}) {
        bench::pinTo(bench::kOwnCpu);
        constexpr std::uintmax_t kStartOfFile = 100;
        std::error_code notThereYet;
        while (!std::filesystem::exists(path()) || std::filesystem::file_size(path(), notThereYet) <= kStartOfFile) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

private:
    static std::string path() { return bench::runDirectory() + "/bus.pcapng"; }

    const bench::Peer process;
};

class Ours {
public:
    explicit Ours(bool isWatched) : asker(std::make_shared<Asker>()) {
        bench::dvbApi().addListener(asker);
        bench::waitForService();
        if (isWatched) {
            monitor.emplace();
        }
        bench::pinTo(bench::kOwnCpu);
        ask(1);
    }
    Ours(const Ours&) = delete;
    Ours& operator=(const Ours&) = delete;
    ~Ours() { bench::dvbApi().removeListener(asker); }

    void ask(std::int64_t questions) { asker->ask(questions, times); }

    Latencies times;

private:
    const bench::ReferenceService service;
    const std::shared_ptr<Asker> asker;
    std::optional<Monitor> monitor;
};

void watched(benchmark::State& state) {
    bench::pinTo(bench::kOwnCpu);  // the service inherits it
    Ours transport(state.range(0) != 0);
    bench::measureTrips(state, transport);
}

void unwatchedTap(benchmark::State& state) {
    dtvservice::BusTap tap;
    std::uint32_t value = 0;
    for ([[maybe_unused]] auto each : state) {
        benchmark::DoNotOptimize(++value);
        tap.command(1, 1, value);
    }
}

void noTap(benchmark::State& state) {
    std::uint32_t value = 0;
    for ([[maybe_unused]] auto each : state) {
        benchmark::DoNotOptimize(++value);
    }
}

BENCHMARK(watched)->Name("monitor")->ArgName("monitors")->Arg(0)->Arg(1)->UseRealTime();
BENCHMARK(unwatchedTap)->Name("tap/unwatched")->UseRealTime();
BENCHMARK(noTap)->Name("tap/none")->UseRealTime();

}  // namespace
