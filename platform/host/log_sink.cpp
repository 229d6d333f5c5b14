// Writes log lines.
#include "log_sink.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <string>

#include "descriptors.h"
#include "settings.h"

namespace host {

namespace {

int openLogFile() {
    const std::string& file = settings().logFile;
    if (file.empty()) {
        return STDERR_FILENO;
    }
    // Without waiting for somebody to read a FIFO.
    constexpr int kFlags = O_WRONLY | O_CREAT | O_APPEND | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    const int descriptor = aboveStandard(open(file.c_str(), kFlags, 0600));
    if (descriptor < 0) {
        LogSink(STDERR_FILENO, true)
            .write("DTV_LOG_FILE: cannot open " + file + ": " + std::strerror(errno) + "; standard error is used\n");
        return STDERR_FILENO;
    }
    return descriptor;
}

/// Keeps a write to a pipe without readers from ending the process. The process's own handling of the signal stays.
class WithoutBrokenPipe {
public:
    explicit WithoutBrokenPipe(bool newNeeded) : needed(newNeeded) {
        if (needed) {
            sigset_t pending;
            sigemptyset(&signal);
            sigaddset(&signal, SIGPIPE);
            sigpending(&pending);
            wasPending = sigismember(&pending, SIGPIPE) == 1;
            pthread_sigmask(SIG_BLOCK, &signal, &before);
        }
    }
    WithoutBrokenPipe(const WithoutBrokenPipe&) = delete;
    WithoutBrokenPipe& operator=(const WithoutBrokenPipe&) = delete;
    ~WithoutBrokenPipe() {
        if (needed) {
            const int error = errno;
            const timespec atOnce{};
            while (!wasPending && sigtimedwait(&signal, nullptr, &atOnce) < 0 && errno == EINTR) {
            }
            pthread_sigmask(SIG_SETMASK, &before, nullptr);
            errno = error;
        }
    }

private:
    const bool needed;
    bool wasPending = false;
    sigset_t signal{};
    sigset_t before{};
};

}  // namespace

/// What the descriptor was when the target was made. A pipe or terminal is opened a second time, without waiting: the
/// setting of the descriptor itself would be that of all processes that share it.
class LogSink::Target {
public:
    Target(int newDescriptor, const struct stat& newIdentity)
        : identity(newIdentity),
          original(newDescriptor),
          again(isPipe() || S_ISCHR(identity.st_mode) ? openedAgain(newDescriptor) : -1) {}
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;
    ~Target() {
        if (again >= 0) {
            close(again);
        }
    }

    bool is(const struct stat& found) const {
        return found.st_dev == identity.st_dev && found.st_ino == identity.st_ino;
    }

    /// The number of bytes written, or negative.
    ssize_t write(const char* bytes, std::size_t count) const {
        if (S_ISSOCK(identity.st_mode)) {
            return send(original, bytes, count, MSG_DONTWAIT | MSG_NOSIGNAL);
        }
        const WithoutBrokenPipe unbroken(isPipe());
        if (again >= 0) {
            return ::write(again, bytes, count);
        }
        // It could not be opened a second time. If it has room, it has room for a line.
        pollfd room{original, POLLOUT, 0};
        return S_ISREG(identity.st_mode) || poll(&room, 1, 0) == 1 ? ::write(original, bytes, count) : -1;
    }

private:
    bool isPipe() const { return S_ISFIFO(identity.st_mode); }
    static int openedAgain(int descriptor) {
        const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
        return aboveStandard(open(path.c_str(), O_WRONLY | O_APPEND | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    }

    const struct stat identity;
    const int original;
    const int again;
};

LogSink& LogSink::instance() {
    static auto* const sink = [] {
        const int file = openLogFile();
        return new LogSink(file, file == STDERR_FILENO);
    }();
    return *sink;
}

LogSink::LogSink(int newDescriptor, bool newMayChange)
    : descriptor(newDescriptor), mayChange(newMayChange), process(ownProcess()) {}

/// In a forked process, a thread that exists only in its parent may hold the lock for ever.
bool LogSink::isLockFree() {
    const bool isFree = mutex.try_lock();
    if (isFree) {
        mutex.unlock();
    }
    return isFree;
}

/// Null if the line has nowhere to go, because the descriptor is closed.
std::shared_ptr<const LogSink::Target> LogSink::currentTarget(pid_t writer) {
    if (const Target* const known = fixed.load(std::memory_order_acquire)) {
        return {std::shared_ptr<const Target>(), known};
    }
    struct stat found {};
    if (writer != process && !isLockFree()) {
        return nullptr;
    }
    const locks::Lock lock(mutex);
    if (fstat(descriptor, &found) != 0) {
        return nullptr;
    }
    if (!target || !target->is(found)) {
        target = std::make_shared<Target>(descriptor, found);
    }
    if (!mayChange) {
        fixed.store(target.get(), std::memory_order_release);
    }
    return target;
}

/// False if not even a part of the line went through.
bool LogSink::tryToWrite(const Target& to, std::string_view line, bool& isTorn) {
    std::size_t written = 0;
    while (written < line.size()) {
        const ssize_t count = to.write(line.data() + written, line.size() - written);
        if (count > 0) {
            written += static_cast<std::size_t>(count);
        } else if (count == 0 || errno != EINTR) {
            isTorn = written != 0;
            return written != 0;
        }
    }
    return true;
}

void LogSink::write(std::string_view line, pid_t writer) {
    const std::shared_ptr<const Target> to = currentTarget(writer);
    if (!to) {
        ++lost;
        return;
    }
    // The common case changes nothing, so it is only looked at.
    const std::uint64_t missing = lost.load() == 0 ? 0 : lost.exchange(0);
    const bool wasTorn = isTornOff.load() && isTornOff.exchange(false);
    bool isTorn = false;
    std::string told = wasTorn ? "\n" : "";
    if (missing != 0) {
        told += std::to_string(missing) + " log lines were lost before the next one\n";
    }
    if (!told.empty()) {
        line = told.append(line);
    }
    if (!tryToWrite(*to, line, isTorn)) {
        lost += missing + 1;
        isTorn = wasTorn;
    }
    if (isTorn) {
        isTornOff = true;
    }
}

}  // namespace host
