// Assembly of sections from a stream of nothing else, with a check of CRC_32: this project's demultiplexer beside
// libbitstream and libdvbpsi. One iteration is one section.
#include <benchmark/benchmark.h>
#include <bitstream/mpeg/psi.h>
#include <bitstream/mpeg/ts.h>
#include <dvbpsi/dvbpsi.h>
// libdvbpsi's headers depend on this order.
#include <dvbpsi/demux.h>
#include <dvbpsi/psi.h>

#include <algorithm>
#include <array>
#include <random>
#include <vector>

#include "demux.h"
#include "si/section.h"

namespace {

using Packet = std::array<std::uint8_t, broadcast::kPacketSize>;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint16_t kPid = 18;
constexpr std::size_t kSections = 1000;

/// An EIT section of random events.
Bytes section(std::size_t size, std::mt19937& random) {
    Bytes bytes(size);
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(random());
    }
    const std::size_t length = size - 3;
    bytes[0] = 0x50;
    bytes[1] = static_cast<std::uint8_t>(0xF0U | length >> 8U);
    bytes[2] = static_cast<std::uint8_t>(length);
    bytes[5] = 0xC1;
    const std::uint32_t crc = si::crc32({bytes.data(), size - 4});
    for (std::size_t index = 0; index < 4; ++index) {
        bytes[size - 4 + index] = static_cast<std::uint8_t>(crc >> (24U - 8U * index));
    }
    return bytes;
}

/// Sections behind each other, as multiplexers send them, and the payload_unit_start where one begins.
std::vector<Packet> packets() {
    std::mt19937 random(1);
    Bytes all;
    std::vector<std::size_t> begins;
    for (std::size_t count = 0; count < kSections; ++count) {
        constexpr std::size_t kShortest = 100;
        constexpr std::size_t kLongest = 4093;  // libbitstream takes no longer ones
        begins.push_back(all.size());
        const Bytes one = section(kShortest + random() % (kLongest - kShortest), random);
        all.insert(all.end(), one.begin(), one.end());
    }
    std::vector<Packet> stream;
    auto begin = begins.begin();
    for (std::size_t at = 0; at < all.size();) {
        Packet packet;
        packet.fill(0xFF);
        std::size_t room = packet.size() - 4;
        const bool starts = begin != begins.end() && *begin < at + room - 1;
        packet[0] = 0x47;
        packet[1] = static_cast<std::uint8_t>((starts ? 0x40U : 0U) | kPid >> 8U);
        packet[2] = static_cast<std::uint8_t>(kPid);
        packet[3] = static_cast<std::uint8_t>(0x10U | (stream.size() & 0xFU));
        if (starts) {
            packet[4] = static_cast<std::uint8_t>(*begin - at);
            --room;
        } else if (begin != begins.end() && *begin == at + room - 1) {
            // The section would begin in the last byte, where no pointer_field can say so: an empty adaptation field.
            packet[3] |= 0x20U;
            packet[4] = 0;
            --room;
        }
        const std::size_t count = std::min(room, all.size() - at);
        std::copy_n(all.begin() + static_cast<std::ptrdiff_t>(at), count,
                    packet.end() - static_cast<std::ptrdiff_t>(room));
        at += count;
        while (begin != begins.end() && *begin < at) {
            ++begin;
        }
        stream.push_back(packet);
    }
    return stream;
}

const std::vector<Packet>& stream() {
    static const std::vector<Packet> theOne = packets();
    return theOne;
}

/// Feeds the stream until the benchmark has enough.
template <typename Feed>
void measure(benchmark::State& state, const std::size_t& sections, Feed feed) {
    while (state.KeepRunningBatch(kSections)) {
        const std::size_t before = sections;
        for (const Packet& packet : stream()) {
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
    demux.subscribe(kPid, [&sections](si::Bytes) { ++sections; });
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
