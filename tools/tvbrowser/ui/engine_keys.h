// How the engine numbers the keys that it knows: by XKB's keysyms and by the hardware's codes.
// Threads: any.
// Blocks:  never.
// Fails:   no value for a key that the engine does not know.
#pragma once

#include <cstdint>
#include <optional>

#include "remote.h"

namespace tvbrowser {

struct EngineKey {
    std::uint32_t keysym;
    std::uint32_t keycode;  ///< evdev's number plus 8
};

std::optional<EngineKey> engineKey(const RemoteKey& key);

}  // namespace tvbrowser
