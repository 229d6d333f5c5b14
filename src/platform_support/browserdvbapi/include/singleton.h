// Singleton: one object of a class, created at first use and never deleted. Classes that use it have default visibility
// so that their instance_ words are exported; the library's export list keeps their other symbols internal.
// Threads: any. A full barrier precedes the publication of the address, so every reader sees the complete object.
// Blocks:  while another thread constructs the object.
// Fails:   passes on an exception of the constructor. The "being created" marker then stays, and later calls wait
//          forever.
#pragma once

#include <cstdint>
#include <new>

#include "velmora/base/wait_for_instance.h"

namespace velmora::base {

template <typename T>
struct __attribute__((visibility("default"))) DefaultSingletonTraits {
    static T* create() { return new T; }
};

template <typename T, typename Traits = DefaultSingletonTraits<T>, typename Unique = T>
class __attribute__((visibility("default"))) Singleton {
public:
    static T* get() {
        const std::intptr_t seen = __atomic_load_n(&instance_, __ATOMIC_SEQ_CST);
        if (static_cast<std::uintptr_t>(seen) > std::uintptr_t{kBeingCreated}) {
            return reinterpret_cast<T*>(seen);
        }
        std::intptr_t expected = kNone;
        if (!__atomic_compare_exchange_n(&instance_, &expected, kBeingCreated, false, __ATOMIC_SEQ_CST,
                                         __ATOMIC_SEQ_CST)) {
            return reinterpret_cast<T*>(internal::WaitForInstance(&instance_));
        }
        T* const created = Traits::create();
        __atomic_store_n(&instance_, reinterpret_cast<std::intptr_t>(created), __ATOMIC_SEQ_CST);
        return created;
    }

    static constexpr std::intptr_t kNone = 0;
    static constexpr std::intptr_t kBeingCreated = 1;

    /// 0 none, 1 being created, otherwise the object's address. Exported by the library.
    static std::intptr_t instance_;
};

template <typename T, typename Traits, typename Unique>
std::intptr_t Singleton<T, Traits, Unique>::instance_ = 0;

}  // namespace velmora::base
