// Recorder: the state behind the recording platform's functions. Internal.
#pragma once

#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>

#include "locks/lock.h"
#include "recording/recording_platform.h"

namespace recording {

/// The log's fast path reads only the atomics.
struct Recorder {
    static Recorder& instance();

    std::mutex mutex;
    std::condition_variable changed;

    std::vector<SentMessage> sent GUARDED_BY(mutex);
    std::function<int(const SentMessage&)> sendAction GUARDED_BY(mutex);
    int sendResult GUARDED_BY(mutex) = 0;
    std::vector<Registration> registrations GUARDED_BY(mutex);
    std::vector<LogLine> log GUARDED_BY(mutex);
    std::function<void(const LogLine&)> logAction GUARDED_BY(mutex);
    std::vector<MemoryDump> dumps GUARDED_BY(mutex);
    int setUpResult GUARDED_BY(mutex) = 0;
    int startResult GUARDED_BY(mutex) = 0;
    int stopResult GUARDED_BY(mutex) = 0;
    int threadCreateResult GUARDED_BY(mutex) = 0;
    std::vector<ThreadKind> threadsCreated GUARDED_BY(mutex);
    bool queueCreationFails GUARDED_BY(mutex) = false;

    std::atomic<std::uint32_t> logThreshold{0xFFFF};
    std::atomic<std::uint64_t> levelChecks{0};
    std::atomic<std::uint64_t> formattedLines{0};

    /// Waits for a condition on the guarded state, ten seconds at most.
    template <typename Condition>
    bool waitFor(Condition condition) {
        locks::Lock lock(mutex);
        return changed.wait_for(lock.forWaiting(), std::chrono::seconds(10), condition);
    }
};

}  // namespace recording
