// Waiting for a singleton that another thread makes.
#pragma once

#include <cstdint>

namespace velmora::base::internal {
std::intptr_t WaitForInstance(std::intptr_t* word);
}
