// Waiting for a singleton that another thread is creating.
#pragma once

#include <cstdint>

#include "frame/api.h"

namespace velmora::base::internal {

/// Returns once the word holds the address of an instance (neither 0, none, nor 1, being created), and returns that
/// address, with everything that the creating thread wrote before it visible. Waits as long as it takes.
/// The word is as wide as a pointer.
DTV_PLATFORM_API std::intptr_t WaitForInstance(std::intptr_t* instance);

}  // namespace velmora::base::internal
