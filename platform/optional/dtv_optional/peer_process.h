// What a platform may know of its peers and do with them beyond the contract. The host platform has it; where a
// platform has not, the function's address is null.
// Threads: any.
// Blocks:  never.
#pragma once

#include <cstdint>

#include "frame/api.h"

namespace dtv_optional {

/// The process at the other end of a connection; 0 if there is no such connection.
DTV_PLATFORM_API __attribute__((weak)) std::uint32_t processOfPeer(std::uint32_t peer);
/// Ends a connection, as if its peer had gone; the callback for that follows. False if there is no such connection.
DTV_PLATFORM_API __attribute__((weak)) bool disconnectPeer(std::uint32_t peer);

}  // namespace dtv_optional
