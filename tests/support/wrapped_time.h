// Time as the library asks for it, in the hands of a test: what it waits for and how long, without waiting for it.
// A suite that uses this lists wrapped_time.cpp and calls dtv_wrap_time(). Calls from within shared libraries are not
// seen: waits of the library's own units are.
#pragma once

#include <pthread.h>
#include <sys/types.h>
#include <time.h>

#include <chrono>
#include <vector>

namespace wrapped_time {

enum class TimedWaits {
    asAsked,
    endAtOnce,  ///< each returns as if its time had passed
    endNever,   ///< each waits until it is woken
};
/// Changes the timed waits on a condition; those on others stay as they are.
void setTimedWaits(pthread_cond_t* condition, TimedWaits how);

/// The deadlines of the timed waits on that condition since then, by the clock that each goes by.
struct Deadline {
    clockid_t clock;
    std::chrono::nanoseconds at;
};
std::vector<Deadline> deadlines();

/// Lets clock_gettime() give a time, or with null fail; lasts until asUsual().
void setClock(const timespec* now);
/// The clocks that were read since setClock().
std::vector<clockid_t> clocksRead();
/// The pauses that usleep() was asked for so far, in microseconds.
std::vector<useconds_t> pauses();

void asUsual();

}  // namespace wrapped_time
