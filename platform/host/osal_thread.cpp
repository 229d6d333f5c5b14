// Creates threads, and logs where in the source each was started.
#include "ovx/osal_thread.h"

#include "host_log.h"

int _ovxOsalPOSIX_pthread_create_line(pthread_t* thread, const pthread_attr_t* attributes, void* (*entry)(void*),
                                      void* argument, const char* file, int line) {
    constexpr const char* kBlogTag = host::kBlogTag;
    const int result = pthread_create(thread, attributes, entry, argument);
    BLOG_TAGGED(blog::kTrace, "thread from %s:%d, result %d\n", blog_base_name(file), line, result);
    return result;
}
