// The base utilities, the OS-layer wrappers, and the byte-order tables of the carriers.
#include <sched.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "frame/endian_table.h"
#include "ovx/debug.h"
#include "ovx/guard.h"
#include "ovx/osal_thread.h"
#include "velmora/base/wait_for_instance.h"

namespace {

template <typename Carrier>
constexpr ovxEndianEntry kCarrierEntries[3] = {
    {ovxEndianKind32, 0},
    {ovxEndianKindCarriedBytes, offsetof(Carrier, data)},
    {},
};

void dieUnless(bool good, const char* what) {
    if (!good) {
        std::fprintf(stderr, "%s failed\n", what);
        std::abort();
    }
}

}  // namespace

extern "C" {

const ovxEndianTable __ovx_EndianTable_ovxDeserString_t = {sizeof(_ovxDeserString_struct),
                                                           kCarrierEntries<_ovxDeserString_struct>};
const ovxEndianTable __ovx_EndianTable_ovxDeserBlobUint8_t = {sizeof(_ovxDeserBlobUint8_struct),
                                                              kCarrierEntries<_ovxDeserBlobUint8_struct>};
const ovxEndianTable __ovx_EndianTable_ovxDeserVectorU8_t = {sizeof(_ovxDeserVectorU8_struct),
                                                             kCarrierEntries<_ovxDeserVectorU8_struct>};

const char* blog_base_name(const char* path) {
    if (path == nullptr) {
        return "";
    }
    const char* const slash = std::strrchr(path, '/');
    return slash == nullptr ? path : slash + 1;
}

int _ovxOsalPOSIX_pthread_attr_init(pthread_attr_t* attributes) {
    return pthread_attr_init(attributes);
}

int _ovxOsalPOSIX_pthread_attr_destroy(pthread_attr_t* attributes) {
    return pthread_attr_destroy(attributes);
}
}

ltGuard::ltGuard(pthread_mutex_t& mutexToHold) : mutex(mutexToHold) {
    dieUnless(pthread_mutex_lock(&mutex) == 0, "ltGuard: pthread_mutex_lock");
}

ltGuard::~ltGuard() {
    dieUnless(pthread_mutex_unlock(&mutex) == 0, "ltGuard: pthread_mutex_unlock");
}

namespace velmora::base::internal {

std::intptr_t WaitForInstance(std::intptr_t* instance) {
    std::intptr_t value = __atomic_load_n(instance, __ATOMIC_ACQUIRE);
    while (value == 0 || value == 1) {
        sched_yield();
        value = __atomic_load_n(instance, __ATOMIC_ACQUIRE);
    }
    return value;
}

}  // namespace velmora::base::internal
