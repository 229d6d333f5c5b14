// Zapping: from the browser's tune to the last of what it is told of the new service, all of which the service knows
// already: the channel, its PMT, its EIT (present and following) and its AIT. Beside a trip over a raw socket, with one
// answer and with as many as the service sends.
#include <benchmark/benchmark.h>

#include <memory>

#include "browser.h"
#include "cpus.h"
#include "latencies.h"
#include "measure_trips.h"
#include "raw_questions.h"
#include "reference_service.h"
#include "zapper.h"

namespace {

using bench::Latencies;
using bench::Zapper;

class Ours {
public:
    Ours() : zapper(std::make_shared<Zapper>([this] { times.next(); })) {
        bench::dvbApi().addListener(zapper);
        bench::waitForService();
        bench::pinTo(bench::kOwnCpu);
        ask(2);  // ends when the tables of both services are known
    }
    Ours(const Ours&) = delete;
    Ours& operator=(const Ours&) = delete;
    ~Ours() { bench::dvbApi().removeListener(zapper); }

    void ask(std::int64_t tunes) {
        times.begin();
        zapper->zap(tunes);
    }

    Latencies times;

private:
    const bench::ReferenceService service;
    const std::shared_ptr<Zapper> zapper;
};

constexpr std::int64_t kBatch = 100;

void ours(benchmark::State& state) {
    bench::pinTo(bench::kOwnCpu);  // the service inherits it
    Ours transport;
    bench::measureTrips(state, transport, kBatch);
}

/// The events up to the AIT, with the components and the news that the AIT is another channel's. The service puts them
/// into one packet; a raw socket's process that knows no such packets sends as many.
constexpr std::int64_t kEvents = 10;

void raw(benchmark::State& state) {
    bench::RawQuestions transport(bench::cpuOfPeer(1), 0, static_cast<unsigned char>(state.range(0)));
    bench::measureTrips(state, transport, kBatch);
}

BENCHMARK(ours)->Name("zapping/ours")->UseRealTime();
BENCHMARK(raw)->Name("zapping/raw")->ArgName("answers")->Arg(1)->Arg(kEvents)->UseRealTime();

}  // namespace
