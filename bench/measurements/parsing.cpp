// Assembly of sections from a stream of nothing else, with a check of CRC_32: this project's demultiplexer beside
// libbitstream and libdvbpsi. One iteration is one section.
#include <benchmark/benchmark.h>
#include <bitstream/mpeg/psi.h>
#include <bitstream/mpeg/ts.h>
#include <dvbpsi/dvbpsi.h>
// libdvbpsi's headers depend on this order.
#include <dvbpsi/demux.h>
#include <dvbpsi/psi.h>

#include "demux.h"
#include "section_stream.h"

namespace {

using bench::kSectionPid;
using bench::kSections;
using bench::Packet;

/// Feeds the stream until the benchmark has enough.
template <typename Feed>
void measure(benchmark::State& state, const std::size_t& sections, Feed feed) {
    while (state.KeepRunningBatch(kSections)) {
        const std::size_t before = sections;
        for (const Packet& packet : bench::sectionStream()) {
            feed(packet);
        }
        if (sections - before != kSections) {
            state.SkipWithError("sections are missing");
            return;
        }
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(sections));
}

void assembleOurs(benchmark::State& state) {
    std::size_t sections = 0;
    broadcast::Demux demux;
    demux.subscribe(kSectionPid, [&sections](si::Bytes) { ++sections; });
    const auto now = broadcast::Clock::now();  // packets that come together have one time
    measure(state, sections, [&](const Packet& packet) { demux.feed(broadcast::TsPacket{packet.data()}, now); });
}

void assembleByBitstream(benchmark::State& state) {
    std::size_t sections = 0;
    std::uint8_t* buffer = nullptr;
    std::uint16_t used = 0;
    psi_assemble_init(&buffer, &used);
    const auto count = [&sections](std::uint8_t* section) {
        sections += psi_validate(section) && psi_check_crc(section) ? 1U : 0U;
        free(section);
    };
    const auto assemble = [&](const std::uint8_t*& payload, std::uint8_t& left) {
        if (std::uint8_t* const section = psi_assemble_payload(&buffer, &used, &payload, &left)) {
            count(section);
        }
    };
    measure(state, sections, [&](const Packet& constPacket) {
        auto* const packet = const_cast<std::uint8_t*>(constPacket.data());
        const auto leftAfter = [packet](const std::uint8_t* at) {
            return static_cast<std::uint8_t>(packet + TS_SIZE - at);
        };
        const std::uint8_t* payload = ts_section(packet);
        std::uint8_t left = leftAfter(payload);
        if (!psi_assemble_empty(&buffer, &used)) {
            assemble(payload, left);
        }
        payload = ts_next_section(packet);
        left = leftAfter(payload);
        while (left > 0) {
            assemble(payload, left);
        }
    });
    psi_assemble_reset(&buffer, &used);
}

void assembleByDvbpsi(benchmark::State& state) {
    std::size_t sections = 0;
    dvbpsi_t* const handle = dvbpsi_new(nullptr, DVBPSI_MSG_NONE);
    const auto count = [](dvbpsi_t*, std::uint8_t, std::uint16_t, void* context) {
        ++*static_cast<std::size_t*>(context);
    };
    dvbpsi_AttachDemux(handle, count, &sections);
    measure(state, sections,
            [&](const Packet& packet) { dvbpsi_packet_push(handle, const_cast<std::uint8_t*>(packet.data())); });
    dvbpsi_DetachDemux(handle);
    dvbpsi_delete(handle);
}

BENCHMARK(assembleOurs)->Name("assembly/ours");
BENCHMARK(assembleByBitstream)->Name("assembly/libbitstream");
BENCHMARK(assembleByDvbpsi)->Name("assembly/libdvbpsi");

}  // namespace
