// Creates threads through the OS layer, which records the place in the source that started them. Results are those of
// the POSIX functions of the same name: 0 or an error number.
#pragma once

#include <pthread.h>

#include "frame/api.h"

extern "C" {

DTV_PLATFORM_API int _ovxOsalPOSIX_pthread_attr_init(pthread_attr_t* attributes);
DTV_PLATFORM_API int _ovxOsalPOSIX_pthread_attr_destroy(pthread_attr_t* attributes);

/// Like pthread_create; `attributes` may be null. `file` and `line` name the calling place; the pointer `file` is kept,
/// not copied.
DTV_PLATFORM_API int _ovxOsalPOSIX_pthread_create_line(pthread_t* thread, const pthread_attr_t* attributes,
                                                       void* (*entry)(void*), void* argument, const char* file,
                                                       int line);
}
