// Waits for a singleton that another thread creates.
#pragma once

#include <cstdint>

namespace velmora::base::internal {
std::intptr_t WaitForInstance(std::intptr_t* word);
}
