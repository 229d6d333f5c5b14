// Scoped lock of a POSIX mutex: the constructor takes it, the destructor releases it. A failure of either is a
// programming error and ends the process.
#pragma once

#include <pthread.h>

#include "frame/api.h"

class DTV_PLATFORM_API ltGuard {
public:
    explicit ltGuard(pthread_mutex_t& mutexToHold);
    ltGuard(const ltGuard&) = delete;
    ltGuard& operator=(const ltGuard&) = delete;
    ~ltGuard();

private:
    pthread_mutex_t& mutex;
};
