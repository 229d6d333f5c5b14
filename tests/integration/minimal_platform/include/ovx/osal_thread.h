// Threads by the operating system layer.
#pragma once

#include <pthread.h>

extern "C" {
int _ovxOsalPOSIX_pthread_attr_init(pthread_attr_t* attributes);
int _ovxOsalPOSIX_pthread_attr_destroy(pthread_attr_t* attributes);
int _ovxOsalPOSIX_pthread_create_line(pthread_t* thread, const pthread_attr_t* attributes, void* (*entry)(void*),
                                      void* argument, const char* file, int line);
}
