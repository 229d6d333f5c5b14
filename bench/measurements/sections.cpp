// Sections: from the service's write to the client's callback, while the writer waits for nothing but room. The same
// with a queue of Boost.Interprocess whose reader does nothing.
//   NAME/cpus:N/filters:N/bytes:N
#include <benchmark/benchmark.h>

#include <boost/interprocess/ipc/message_queue.hpp>
#include <string>
#include <vector>

#include "cpus.h"
#include "peer.h"
#include "sections.h"

namespace {

constexpr std::int64_t kBatch = 20000;
constexpr std::size_t kMessages = 128;      // of the library's queue
constexpr std::size_t kMessageSize = 4500;  // likewise

class Ours {
public:
    Ours(int cpu, std::int64_t filters, std::size_t bytes) : sections(cpu, filters, bytes) {
        bench::pinTo(bench::kOwnCpu);
    }
    void take(std::int64_t count) { sections.take(count); }

private:
    bench::Sections sections;
};

class Raw {
    using Queue = boost::interprocess::message_queue;

public:
    Raw(int cpu, std::int64_t, std::size_t bytes)
        : name("dtv-bench-" + std::to_string(getpid())),
          queue(boost::interprocess::create_only, name.c_str(), kMessages, kMessageSize),
          orders(SOCK_SEQPACKET),
          writer("queue_writer", {name, std::to_string(cpu), std::to_string(bytes)}, orders.peers) {
        bench::pinTo(bench::kOwnCpu);
    }
    Raw(const Raw&) = delete;
    Raw& operator=(const Raw&) = delete;
    ~Raw() {
        close(orders.own);
        Queue::remove(name.c_str());
    }
    void take(std::int64_t messages) {
        const auto order = static_cast<std::uint32_t>(messages);
        send(orders.own, &order, sizeof order, MSG_NOSIGNAL);
        for (; messages > 0; --messages) {
            Queue::size_type length = 0;
            unsigned int priority = 0;
            queue.receive(message.data(), message.size(), length, priority);
        }
    }

private:
    const std::string name;
    Queue queue;
    const bench::SocketPair orders;
    const bench::Peer writer;
    std::vector<std::uint8_t> message = std::vector<std::uint8_t>(kMessageSize);
};

template <typename Transport>
void measureSections(benchmark::State& state) {
    const auto bytes = static_cast<std::size_t>(state.range(2));
    Transport transport(bench::cpuOfPeer(state.range(0)), state.range(1), bytes);
    transport.take(kBatch);
    while (state.KeepRunningBatch(kBatch)) {
        transport.take(kBatch);
    }
    state.SetItemsProcessed(state.iterations());
}

void sizes(benchmark::internal::Benchmark* measured, const std::vector<std::int64_t>& filters) {
    measured->ArgNames({"cpus", "filters", "bytes"})->ArgsProduct({{1, 2}, filters, {1024, 4096}})->UseRealTime();
}

BENCHMARK_TEMPLATE(measureSections, Ours)->Name("sections/ours")->Apply([](auto* measured) {
    sizes(measured, {1, 10, 100, 1000});
});
BENCHMARK_TEMPLATE(measureSections, Raw)->Name("sections/raw_queue")->Apply([](auto* measured) {
    sizes(measured, {1});
});

}  // namespace
