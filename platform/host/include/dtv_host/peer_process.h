// What the host platform knows of its peers beyond the contract. A set maker's platform need not have it, so the
// function's address is null there.
// Threads: any.
// Blocks:  never.
#pragma once

#include <cstdint>

#include "frame/api.h"

namespace dtv_host {

/// The process at the other end of a connection; 0 if there is no such connection.
DTV_PLATFORM_API __attribute__((weak)) std::uint32_t processOfPeer(std::uint32_t peer);

}  // namespace dtv_host
