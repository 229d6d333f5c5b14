// Keeps the process's number in a page that the kernel clears in each process that is forked from this one.
#include "own_process.h"

#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <new>

namespace host {

namespace {

using Kept = std::atomic<pid_t>;

/// Null if the kernel has no such pages.
Kept* pageThatForksClear() {
    void* const page = mmap(nullptr, sizeof(Kept), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED) {
        return nullptr;
    }
    if (madvise(page, sizeof(Kept), MADV_WIPEONFORK) != 0) {
        munmap(page, sizeof(Kept));
        return nullptr;
    }
    return new (page) Kept(0);
}

}  // namespace

pid_t ownProcess() {
    static Kept* const kept = pageThatForksClear();
    pid_t number = kept == nullptr ? 0 : kept->load(std::memory_order_relaxed);
    if (number == 0) {
        number = getpid();
        if (kept != nullptr) {
            kept->store(number, std::memory_order_relaxed);
        }
    }
    return number;
}

}  // namespace host
