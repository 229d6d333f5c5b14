// Lock: holds a lock to the end of the block, so that clang can check what is used under it; and the words that say
// what a lock guards. The preset `clang` does not compile code that uses a guarded field without its lock, or that
// takes a lock which the block holds already.
//
// The locks themselves are those of the standard library, of Boost and of POSIX, because the binary interfaces name
// their types. Clang takes any object for a lock that these words name.
#pragma once

#include <mutex>

#ifdef __clang__
#define LOCKS_ATTRIBUTE(attribute) __attribute__((attribute))
#else
#define LOCKS_ATTRIBUTE(attribute)
#endif

/// On a field or variable: code that uses it holds the lock.
#define GUARDED_BY(mutex) LOCKS_ATTRIBUTE(guarded_by(mutex))
/// On a function or lambda: its caller holds the lock. On a condition variable's predicate: the wait holds it.
#define REQUIRES(mutex) LOCKS_ATTRIBUTE(requires_capability(mutex))
/// On a function: its caller does not hold the lock, because the function takes it or calls out.
#define EXCLUDES(mutex) LOCKS_ATTRIBUTE(locks_excluded(mutex))

namespace locks {

/// `Guard` takes the lock in its constructor and releases it in its destructor.
template <typename Mutex, typename Guard = std::unique_lock<Mutex>>
class LOCKS_ATTRIBUTE(scoped_lockable) Lock {
public:
    explicit Lock(Mutex& mutex) LOCKS_ATTRIBUTE(acquire_capability(mutex)) : guard(mutex) {}
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    ~Lock() LOCKS_ATTRIBUTE(release_capability()) {}

    void unlock() LOCKS_ATTRIBUTE(release_capability()) { guard.unlock(); }
    void lock() LOCKS_ATTRIBUTE(acquire_capability()) { guard.lock(); }
    /// For the waits of a condition variable.
    Guard& forWaiting() { return guard; }

private:
    Guard guard;
};

}  // namespace locks
