// Measures round trips of any transport: its ask(count), and its times.
#pragma once

#include <benchmark/benchmark.h>

#include "latencies.h"

namespace bench {

template <typename Transport>
void measureTrips(benchmark::State& state, Transport& transport, std::int64_t batch = 1000) {
    transport.ask(batch);  // to warm up
    transport.times = Latencies();
    while (state.KeepRunningBatch(batch)) {
        transport.ask(batch);
    }
    transport.times.tell(state);
}

}  // namespace bench
