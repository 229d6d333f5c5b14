// A packet of several messages from a service, as a client takes it apart.
#include "several_messages.h"

#include "oracles.h"

namespace {

constexpr std::size_t kLongestPacket = 1U << 20U;

/// What is taken out and packed again must be the same bytes, up to the error.
void expectSame(const host::SeveralMessages& again, const std::vector<std::uint8_t>& packet) {
    const host::SeveralMessages::Packet packed = again.packet();
    fuzz::expect(packed.length <= packet.size() + host::kSeveralMark.size(), "the packet has grown");
    for (std::size_t at = host::kSeveralMark.size(); at < packed.length; ++at) {
        fuzz::expect(packed.bytes[at] == packet[at - host::kSeveralMark.size()], "the packet has changed");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::run(data, size, {64U << 10U, 40}, [](fuzz::Input input) {
        std::vector<std::uint8_t> packet = input.rest();
        host::SeveralMessages again(kLongestPacket);
        host::ReceivedMessages messages(packet.data(), packet.size());
        host::ReceivedMessages::Message message{};
        std::string error;
        std::size_t count = 0;
        bool isWhole = true;
        while (messages.next(message, error)) {
            message.bytes[message.length] = 0;  // as a decoder that ends a text
            isWhole = isWhole && again.add(message.bytes, message.length);
            ++count;
        }
        fuzz::expectPrintable(error, "an error");
        if (isWhole && count > 1) {
            expectSame(again, packet);
        }
    });
}
