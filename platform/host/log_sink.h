// LogSink: where log lines go, standard error or the file of DTV_LOG_FILE. A log line neither kills the process nor
// holds it up: a pipe, FIFO, socket or terminal that nobody reads loses lines, and the next line that goes through is
// preceded by their number.
// Threads: any.
// Blocks:  never, but for a regular file.
// Locks:   mutex guards target; not held while a line is written.
// Fails:   a file that cannot be opened is told on standard error, which is then used.
#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string_view>

#include "locks/lock.h"
#include "own_process.h"

namespace host {

class LogSink {
public:
    /// The process's sink; never destroyed.
    static LogSink& instance();

    /// The descriptor stays the caller's. If it may change, for example because the process redirects its standard
    /// error, each line goes to what it is then.
    LogSink(int newDescriptor, bool newMayChange);
    LogSink(const LogSink&) = delete;
    LogSink& operator=(const LogSink&) = delete;

    /// Writes the line, which ends with a newline. `writer` is this process.
    void write(std::string_view line, pid_t writer = ownProcess());

private:
    class Target;

    bool isLockFree();
    std::shared_ptr<const Target> currentTarget(pid_t writer);
    static bool tryToWrite(const Target& to, std::string_view line, bool& isTorn);

    const int descriptor;
    const bool mayChange;
    const pid_t process;
    std::mutex mutex;
    std::shared_ptr<const Target> target GUARDED_BY(mutex);
    std::atomic<const Target*> fixed{nullptr};  // the target, once it is there and does not change
    std::atomic<std::uint64_t> lost{0};         // lines, since the last one that went through
    std::atomic<bool> isTornOff{false};         // the last line went through in part
};

}  // namespace host
