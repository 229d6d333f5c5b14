// Marks what the platform library exports. The browser library and the DTV service use only functions and classes with
// this mark.
#pragma once

#define DTV_PLATFORM_API __attribute__((visibility("default")))

/// Names the lock of a field. Only this project's own build checks it, with clang; for all others it is empty.
#ifdef DTV_CHECK_LOCKS
#define DTV_GUARDED_BY(mutex) __attribute__((guarded_by(mutex)))
#else
#define DTV_GUARDED_BY(mutex)
#endif
