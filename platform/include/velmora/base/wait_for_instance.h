// Waits for a singleton that another thread is creating.
#pragma once

#include <cstdint>

#include "frame/api.h"

namespace velmora::base::internal {

/// Waits, without a limit, until the word holds the address of an instance: neither 0 (none) nor 1 (being created).
/// Returns that address; all writes of the creating thread are visible then. The word is as wide as a pointer.
DTV_PLATFORM_API std::intptr_t WaitForInstance(std::intptr_t* instance);

}  // namespace velmora::base::internal
