// Datagrams of an RTP input, and the packets in what comes out. Each record: a datagram behind its length.
#include <cstring>

#include "oracles.h"
#include "packet_reader.h"
#include "rtp.h"

namespace {

class MemorySource : public dtvservice::ByteSource {
public:
    explicit MemorySource(std::vector<std::uint8_t> newBytes) : bytes(std::move(newBytes)) {}

    std::size_t read(std::uint8_t* to, std::size_t capacity) override {
        const std::size_t count = std::min(capacity, bytes.size() - at);
        if (count != 0) {
            std::memcpy(to, bytes.data() + at, count);
        }
        at += count;
        return count;
    }
    bool rewind() override {
        at = 0;
        return true;
    }

private:
    std::vector<std::uint8_t> bytes;
    std::size_t at = 0;
};

std::uint64_t countPackets(dtvservice::PacketReader& reader) {
    std::uint64_t packets = 0;
    while (const std::uint8_t* const packet = reader.next()) {
        fuzz::expect(packet[0] == 0x47, "a packet does not begin with the sync byte");
        ++packets;
    }
    return packets;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::run(data, size, {1U << 20U, 200}, [size](fuzz::Input input) {
        dtvservice::RtpReorderer reorderer;
        std::vector<std::uint8_t> payload;
        while (!input.isEmpty()) {
            const std::vector<std::uint8_t> datagram = input.chunk();
            const std::vector<std::uint8_t> inOrder = reorderer.take(datagram.data(), datagram.size());
            payload.insert(payload.end(), inOrder.begin(), inOrder.end());
        }
        fuzz::expect(payload.size() <= size, "more payload than datagrams");
        dtvservice::PacketReader reader(std::make_unique<MemorySource>(payload));
        const std::uint64_t packets = countPackets(reader);
        fuzz::expect(packets * broadcast::kPacketSize + reader.skippedBytes() <= payload.size(),
                     "more packets than bytes");
        reader.rewind();
        fuzz::expect(countPackets(reader) == packets, "other packets after the return to the begin");
    });
}
