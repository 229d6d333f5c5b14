// The replacements that the linker puts in place of the C library's functions.
#include "wrapped_time.h"

#include <unistd.h>

#include <cerrno>
#include <mutex>
#include <optional>
#include <thread>

#include "locks/lock.h"

namespace wrapped_time {

namespace {

struct State {
    std::mutex mutex;
    pthread_cond_t* condition GUARDED_BY(mutex) = nullptr;
    TimedWaits timedWaits GUARDED_BY(mutex) = TimedWaits::asAsked;
    std::vector<Deadline> deadlines GUARDED_BY(mutex);
    bool clockIsSet GUARDED_BY(mutex) = false;
    std::optional<timespec> now GUARDED_BY(mutex);
    std::vector<clockid_t> clocksRead GUARDED_BY(mutex);
    std::vector<useconds_t> pauses GUARDED_BY(mutex);
};

State& state() {
    static auto* const theState = new State;
    return *theState;
}

TimedWaits note(const pthread_cond_t* condition, clockid_t clock, const timespec& deadline) {
    const locks::Lock lock(state().mutex);
    if (condition != state().condition) {
        return TimedWaits::asAsked;
    }
    state().deadlines.push_back(
        {clock, std::chrono::seconds(deadline.tv_sec) + std::chrono::nanoseconds(deadline.tv_nsec)});
    return state().timedWaits;
}

template <typename Wait>
int timedWait(pthread_cond_t* condition, pthread_mutex_t* mutex, clockid_t clock, const timespec* deadline, Wait real) {
    switch (note(condition, clock, *deadline)) {
        case TimedWaits::endAtOnce:
            // Releases the mutex and takes it again, as a real wait does.
            pthread_mutex_unlock(mutex);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));  // lets another thread take the mutex
            pthread_mutex_lock(mutex);
            return ETIMEDOUT;
        case TimedWaits::endNever:
            return pthread_cond_wait(condition, mutex);
        case TimedWaits::asAsked:
            break;
    }
    return real();
}

}  // namespace

void setTimedWaits(pthread_cond_t* condition, TimedWaits how) {
    const locks::Lock lock(state().mutex);
    state().condition = condition;
    state().timedWaits = how;
    state().deadlines.clear();
}

std::vector<Deadline> deadlines() {
    const locks::Lock lock(state().mutex);
    return state().deadlines;
}

void setClock(const timespec* now) {
    const locks::Lock lock(state().mutex);
    state().clockIsSet = true;
    state().now = now != nullptr ? std::optional<timespec>(*now) : std::nullopt;
    state().clocksRead.clear();
}

std::vector<clockid_t> clocksRead() {
    const locks::Lock lock(state().mutex);
    return state().clocksRead;
}

std::vector<useconds_t> pauses() {
    const locks::Lock lock(state().mutex);
    return state().pauses;
}

void asUsual() {
    const locks::Lock lock(state().mutex);
    state().condition = nullptr;
    state().clockIsSet = false;
}

}  // namespace wrapped_time

// NOLINTBEGIN(bugprone-reserved-identifier): the names are the linker's.
extern "C" {

int __real_pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex, const timespec* deadline);
int __real_pthread_cond_clockwait(pthread_cond_t* condition, pthread_mutex_t* mutex, clockid_t clock,
                                  const timespec* deadline);
int __real_clock_gettime(clockid_t clock, timespec* now);
int __real_usleep(useconds_t pause);

int __wrap_pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex, const timespec* deadline) {
    return wrapped_time::timedWait(condition, mutex, CLOCK_REALTIME, deadline,
                                   [=] { return __real_pthread_cond_timedwait(condition, mutex, deadline); });
}

int __wrap_pthread_cond_clockwait(pthread_cond_t* condition, pthread_mutex_t* mutex, clockid_t clock,
                                  const timespec* deadline) {
    return wrapped_time::timedWait(condition, mutex, clock, deadline,
                                   [=] { return __real_pthread_cond_clockwait(condition, mutex, clock, deadline); });
}

int __wrap_clock_gettime(clockid_t clock, timespec* now) {
    wrapped_time::State& state = wrapped_time::state();
    const locks::Lock lock(state.mutex);
    if (!state.clockIsSet) {
        return __real_clock_gettime(clock, now);
    }
    state.clocksRead.push_back(clock);
    if (!state.now) {
        return -1;
    }
    *now = *state.now;
    return 0;
}

int __wrap_usleep(useconds_t pause) {
    {
        const locks::Lock lock(wrapped_time::state().mutex);
        wrapped_time::state().pauses.push_back(pause);
    }
    return __real_usleep(pause);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
