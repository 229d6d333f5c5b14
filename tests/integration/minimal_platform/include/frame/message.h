// A message's header and addressing.
#pragma once

#include <cstdint>

namespace frame {

struct MsgMeta {
    std::int32_t first = -1;
    std::uint32_t interface = 0;
    std::uint32_t message = 0;
    std::uint8_t direction = 0;
};

struct MsgIds {
    static MsgIds none;
    std::uint32_t receiver = ~0U;
};

struct TransportInfo {
    std::uint32_t sender = ~0U;
};

}  // namespace frame
