// PosixLock: a Lock of a POSIX mutex, taken and released by the platform's guard.
#pragma once

#include "locks/lock.h"
#include "ovx/guard.h"

namespace locks {

using PosixLock = Lock<pthread_mutex_t, ltGuard>;

}  // namespace locks
