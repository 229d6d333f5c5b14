// PacketFaults: what becomes of an input's packets while faults last. The same packets are chosen for the same seed.
// Threads: the loop's.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <array>
#include <list>
#include <optional>
#include <random>

#include "ts_packet.h"

namespace dtvservice {

class PacketFaults {
public:
    enum class Kind { withheld, damaged };
    struct Fault {
        std::uint64_t id;
        Kind kind;
        std::optional<std::uint16_t> pid;  ///< nothing: all
        double percent;
        std::mt19937 random;
    };

    void add(const Fault& fault) { faults.push_back(fault); }
    void remove(std::uint64_t id) {
        faults.remove_if([id](const Fault& fault) { return fault.id == id; });
    }
    bool empty() const { return faults.empty(); }

    /// The packet, or one with a wrong bit, which is valid until the next call; null if it does not arrive.
    const std::uint8_t* pass(broadcast::TsPacket packet);

private:
    static bool isChosen(Fault& fault, std::uint16_t pid);
    void damage(Fault& fault);

    std::list<Fault> faults;
    std::array<std::uint8_t, broadcast::kPacketSize> copy{};
};

}  // namespace dtvservice
