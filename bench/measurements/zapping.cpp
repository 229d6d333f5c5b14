// Zapping: from the browser's tune to the last of what it is told of the new service, all of which the service knows
// already: the channel, its PMT, its EIT (present and following) and its AIT. Beside a trip over a raw socket, with one
// answer and with as many as the service sends.
#include <benchmark/benchmark.h>
#include <dvb_helpers/empty_listener.h>

#include <array>
#include <memory>

#include "browser.h"
#include "countdown.h"
#include "cpus.h"
#include "latencies.h"
#include "measure_trips.h"
#include "raw_questions.h"
#include "reference_service.h"

namespace {

using bench::Latencies;

/// Services of tsmake's sample with all tables.
constexpr std::array<std::uint16_t, 2> kServices = {28106, 28107};

/// Tunes to the services in turn, to the next when all has been told of the one before.
class Zapper final : public velmora::dtv::helpers::EmptyListener {
public:
    /// Runs on the caller's thread and, from the second tune on, on the transport thread.
    void zap(std::int64_t tunes, Latencies& newTimes) {
        left = tunes;
        times = &newTimes;
        times->begin();
        tune();
        allDone.wait();
    }

private:
    void OnChannelChanged(bool started, std::uint16_t, std::uint16_t, std::uint16_t sid) override {
        told(kChannel, started && sid == wanted());
    }
    void onPMTSectionUpdated(std::uint16_t, std::uint16_t, std::uint16_t sid, int, std::string) override {
        told(kPmt, sid == wanted());
    }
    void onEITSectionUpdated(int, std::string section) override {
        constexpr std::size_t kNumber = 6;
        const auto byteAt = [&](std::size_t at) { return static_cast<std::uint8_t>(section[at]); };
        told(byteAt(kNumber) == 0 ? kPresent : kFollowing, (byteAt(3) << 8 | byteAt(4)) == wanted());
    }
    void onAITSectionUpdated(std::uint16_t, std::uint16_t, std::uint16_t sid, const std::string&) override {
        told(kAit, sid == wanted());
    }

    enum Part : unsigned int { kChannel = 1, kPmt = 2, kPresent = 4, kFollowing = 8, kAit = 16, kAll = 31 };

    std::uint16_t wanted() const { return kServices[service]; }
    void tune() {
        service = 1 - service;
        parts = 0;
        bench::dvbApi().tuneToService(10, 1, 1025, wanted(), 0);
    }
    void told(Part part, bool isWanted) {
        if (!isWanted || parts == kAll) {
            return;
        }
        parts |= part;
        if (parts == kAll) {
            times->next();
            if (--left == 0) {
                allDone.end();
            } else {
                tune();
            }
        }
    }

    std::size_t service = 0;
    unsigned int parts = kAll;
    std::int64_t left = 0;
    Latencies* times = nullptr;
    bench::Countdown allDone;
};

class Ours {
public:
    Ours() : zapper(std::make_shared<Zapper>()) {
        bench::dvbApi().addListener(zapper);
        bench::waitForService();
        bench::pinTo(bench::kOwnCpu);
        ask(kServices.size());  // ends when the tables of all services are known
    }
    Ours(const Ours&) = delete;
    Ours& operator=(const Ours&) = delete;
    ~Ours() { bench::dvbApi().removeListener(zapper); }

    void ask(std::int64_t tunes) { zapper->zap(tunes, times); }

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

/// The events up to the AIT, with the components and the news that the AIT is another channel's.
constexpr std::int64_t kEvents = 10;

void raw(benchmark::State& state) {
    bench::RawQuestions transport(bench::cpuOfPeer(1), 0, static_cast<unsigned char>(state.range(0)));
    bench::measureTrips(state, transport, kBatch);
}

BENCHMARK(ours)->Name("zapping/ours")->UseRealTime();
BENCHMARK(raw)->Name("zapping/raw")->ArgName("answers")->Arg(1)->Arg(kEvents)->UseRealTime();

}  // namespace
