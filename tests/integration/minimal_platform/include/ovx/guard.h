// Holds a mutex for the length of a block.
#pragma once

#include <pthread.h>

class ltGuard {
public:
    explicit ltGuard(pthread_mutex_t& toHold);
    ltGuard(const ltGuard&) = delete;
    ltGuard& operator=(const ltGuard&) = delete;
    ~ltGuard();

private:
    pthread_mutex_t& held;
};
