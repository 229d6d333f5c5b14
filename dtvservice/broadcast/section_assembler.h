// SectionAssembler: assembles complete sections from the packets of one PID (ISO/IEC 13818-1, clauses 2.4.3.3 and
// 2.4.4).
//
//  1. Packets with transport_error_indicator or scrambling bits are not used.
//  2. A gap in the continuity counter drops the section in progress. A packet that repeats the previous one bit for
//  bit,
//     except for the PCR, is ignored once. A packet that repeats only the counter is a gap.
//  3. A section that is still incomplete where a packet starts a new one is dropped.
//  4. A section may have up to 4096 bytes. One with a wrong CRC_32 is counted and dropped.
//
// Threads: one.
// Blocks:  never.
// Fails:   never; errors are counted.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <vector>

#include "si/section.h"
#include "ts_packet.h"

namespace broadcast {

struct SectionCounts {
    std::uint64_t packets = 0;
    std::uint64_t sections = 0;
    std::uint64_t continuityErrors = 0;
    std::uint64_t duplicates = 0;
    std::uint64_t unusable = 0;  ///< transport errors and scrambled packets
    std::uint64_t cut = 0;
    std::uint64_t crcErrors = 0;

    SectionCounts& operator+=(const SectionCounts& other) {
        packets += other.packets;
        sections += other.sections;
        continuityErrors += other.continuityErrors;
        duplicates += other.duplicates;
        unusable += other.unusable;
        cut += other.cut;
        crcErrors += other.crcErrors;
        return *this;
    }
};

class SectionAssembler {
public:
    using Handler = std::function<void(si::Bytes section)>;

    /// The handler is called for each correct section. The bytes are valid only during the call.
    explicit SectionAssembler(Handler newHandler);

    void feed(TsPacket packet);
    /// The next packets do not continue the previous ones. No gap is counted.
    void discontinuity();
    const SectionCounts& counts() const { return counts_; }

private:
    enum class Order { next, duplicate, broken };

    Order orderOf(TsPacket packet);
    void remember(TsPacket packet);
    void startUnit(const std::uint8_t* payload, std::size_t size);
    std::size_t begin(si::Bytes bytes);
    std::size_t append(si::Bytes bytes);
    std::size_t take(si::Bytes bytes, std::size_t most);
    void dropInProgress();
    void finish(si::Bytes complete);

    Handler handler;
    std::vector<std::uint8_t> section;  // in progress
    std::size_t filled = 0;             // bytes of it; 0 if there is none
    std::array<std::uint8_t, kPacketSize> last{};
    bool haveLast = false;
    bool lastWasDuplicate = false;
    SectionCounts counts_;
};

}  // namespace broadcast
