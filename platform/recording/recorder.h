// Recorder: the state behind the recording platform's functions. Internal.
#pragma once

#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>

#include "recording/recording_platform.h"

namespace recording {

/// The mutex guards everything except the atomics, which the log's fast path reads.
struct Recorder {
    static Recorder& instance();

    std::mutex mutex;
    std::condition_variable changed;

    std::vector<SentMessage> sent;
    std::function<int(const SentMessage&)> sendAction;
    int sendResult = 0;
    std::vector<Registration> registrations;
    std::vector<LogLine> log;
    std::function<void(const LogLine&)> logAction;
    std::vector<MemoryDump> dumps;
    int setUpResult = 0;
    int startResult = 0;
    int stopResult = 0;
    int threadCreateResult = 0;
    std::vector<ThreadKind> threadsCreated;
    bool queueCreationFails = false;

    std::atomic<std::uint32_t> logThreshold{0xFFFF};
    std::atomic<std::uint64_t> levelChecks{0};
    std::atomic<std::uint64_t> formattedLines{0};

    /// Waits for a condition on the guarded state, ten seconds at most.
    template <typename Condition>
    bool waitFor(Condition condition) {
        std::unique_lock<std::mutex> lock(mutex);
        return changed.wait_for(lock, std::chrono::seconds(10), condition);
    }
};

}  // namespace recording
