// Descriptions of broadcasts, and a second of the broadcast that they describe.
#include <stdexcept>

#include "description.h"
#include "oracles.h"
#include "scheduler.h"
#include "text/printable.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::run(data, size, {16U << 20U, 8000}, [](fuzz::Input input) {
        constexpr std::uint64_t kMostBitRate = 4000000;  // others only take longer
        std::string error;
        const std::optional<tsmake::Multiplex> multiplex = tsmake::parseDescription(input.restAsText(), error);
        fuzz::expect(multiplex.has_value() == error.empty(), "neither a multiplex nor an error, or both: " + error);
        fuzz::expectPrintable(text::printable(error), "error of a description");
        if (!multiplex || multiplex->bitRate > kMostBitRate) {
            return;
        }
        std::uint64_t packets = 0;
        try {
            tsmake::writeMultiplex(*multiplex, 1, [&packets](const std::uint8_t* packet) {
                fuzz::expect(packet[0] == 0x47, "a packet does not begin with the sync byte");
                ++packets;
            });
            fuzz::expect(packets > 0, "a broadcast without packets");
        } catch (const std::length_error&) {
            // A table is too long, or the bit rate too low.
        }
    });
}
