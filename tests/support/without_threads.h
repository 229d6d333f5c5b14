// Injects threads that cannot be made, also for root, whom limits do not concern.
#pragma once

#include <gtest/gtest.h>
#include <pthread.h>

#include <cstdint>

/// While it lives no thread can be made: the usual stack of one is larger than the memory.
class WithoutThreads {
public:
    WithoutThreads() {
        pthread_getattr_default_np(&before);
        pthread_attr_t huge;
        pthread_attr_init(&huge);
        pthread_attr_setstacksize(&huge, SIZE_MAX / 4 * 3 / 65536 * 65536);
        EXPECT_EQ(pthread_setattr_default_np(&huge), 0);
        pthread_attr_destroy(&huge);
    }
    WithoutThreads(const WithoutThreads&) = delete;
    WithoutThreads& operator=(const WithoutThreads&) = delete;
    ~WithoutThreads() {
        pthread_setattr_default_np(&before);
        pthread_attr_destroy(&before);
    }

private:
    pthread_attr_t before;
};
