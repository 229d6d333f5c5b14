// Chooses packets.
#include "packet_faults.h"

namespace dtvservice {

const std::uint8_t* PacketFaults::pass(broadcast::TsPacket packet) {
    for (Fault& fault : faults) {
        if (!isChosen(fault, packet.pid())) {
            continue;
        }
        if (fault.kind == Kind::withheld) {
            return nullptr;
        }
        if (packet.bytes != copy.data()) {
            std::memcpy(copy.data(), packet.bytes, copy.size());
            packet.bytes = copy.data();
        }
        damage(fault);
    }
    return packet.bytes;
}

/// No distribution of the library is used: each library has its own numbers.
bool PacketFaults::isChosen(Fault& fault, std::uint16_t pid) {
    constexpr double kAll = 100;
    constexpr unsigned int kParts = 1000000;
    if (fault.pid && *fault.pid != pid) {
        return false;
    }
    const auto drawn = static_cast<double>(fault.random() % kParts);
    return fault.percent >= kAll || drawn < fault.percent / kAll * kParts;
}

/// Behind the header, so that the packet stays one of its PID.
void PacketFaults::damage(Fault& fault) {
    constexpr std::size_t kHeader = 4;
    constexpr std::size_t kBitsOfAByte = 8;
    const std::size_t bit = fault.random() % ((broadcast::kPacketSize - kHeader) * kBitsOfAByte);
    copy[kHeader + bit / kBitsOfAByte] ^= static_cast<std::uint8_t>(1U << bit % kBitsOfAByte);
}

}  // namespace dtvservice
