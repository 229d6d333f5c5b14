// Lets a test control and observe the library's waits and clocks without waiting in real time. To use it, a suite lists
// wrapped_time.cpp and calls dtv_wrap_time(). It covers calls from the library's own units, not from other shared
// libraries.
#pragma once

#include <pthread.h>
#include <sys/types.h>
#include <time.h>

#include <chrono>
#include <vector>

namespace wrapped_time {

enum class TimedWaits {
    asAsked,
    endAtOnce,  ///< each returns at once, as if its time had passed
    endNever,   ///< each waits until it is woken
};
/// Changes the timed waits on one condition; waits on other conditions stay real.
void setTimedWaits(pthread_cond_t* condition, TimedWaits how);

/// The deadlines of the timed waits on that condition since then, with the clock that each uses.
struct Deadline {
    clockid_t clock;
    std::chrono::nanoseconds at;
};
std::vector<Deadline> deadlines();

/// Makes clock_gettime() return this time, or fail for null, until asUsual().
void setClock(const timespec* now);
/// The clocks that were read since setClock(), in order.
std::vector<clockid_t> clocksRead();
/// The durations of all usleep() calls so far, in microseconds.
std::vector<useconds_t> pauses();

void asUsual();

}  // namespace wrapped_time
