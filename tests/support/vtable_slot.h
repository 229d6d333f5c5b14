// Returns the virtual-table slot of an operation from a pointer to member, as the Itanium C++ ABI and its 32-bit ARM
// variant define it. In a class that begins with a virtual destructor, slots 0 and 1 are the two destructors.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

template <typename Class, typename Result, typename... Arguments>
int vtableSlot(Result (Class::*operation)(Arguments...)) {
    struct {
        std::intptr_t pointer;
        std::intptr_t adjustment;
    } layout{};
    static_assert(sizeof operation == sizeof layout, "the ABI's pointer to member");
    std::memcpy(&layout, &operation, sizeof layout);
#if defined(__arm__) || defined(__aarch64__)
    return (layout.adjustment & 1) != 0 ? static_cast<int>(layout.pointer / static_cast<int>(sizeof(void*))) : -1;
#else
    return (layout.pointer & 1) != 0 ? static_cast<int>((layout.pointer - 1) / static_cast<int>(sizeof(void*))) : -1;
#endif
}

template <typename Class, typename Result, typename... Arguments>
int vtableSlot(Result (Class::*operation)(Arguments...) const) {
    return vtableSlot(reinterpret_cast<Result (Class::*)(Arguments...)>(operation));
}
