// Calls an operation by its virtual-table slot, as code compiled against an interface's header does.
#pragma once

#include <cstdint>

template <typename Result, typename... Parameters>
Result callSlot(void* object, int slot, Parameters... arguments) {
    using Function = Result (*)(void*, Parameters...);
    void* const* const table = *static_cast<void* const* const*>(object);
    const auto function = reinterpret_cast<Function>(reinterpret_cast<std::uintptr_t>(table[slot]));
    return function(object, arguments...);
}
