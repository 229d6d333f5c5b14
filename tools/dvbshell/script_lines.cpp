// Waits with poll(), which a signal ends, and reads what is there.
#include "script_lines.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

#include "interrupt.h"

namespace dvbshell {

bool ScriptLines::next(std::string& line) {
    std::size_t end = 0;
    while ((end = buffered.find('\n')) == std::string::npos && !hasEnded) {
        if (!readMore()) {
            return false;
        }
    }
    if (buffered.empty() || isInterrupted()) {
        return false;
    }
    line = buffered.substr(0, end);
    buffered.erase(0, end == std::string::npos ? end : end + 1);
    return true;
}

/// Returns false if Ctrl-C came first.
bool ScriptLines::readMore() {
    constexpr int kMillisecondsBetweenLooks = 100;  // a signal may come right before the wait
    pollfd input{STDIN_FILENO, POLLIN, 0};
    while (!isInterrupted()) {
        if (poll(&input, 1, kMillisecondsBetweenLooks) <= 0) {
            continue;
        }
        char bytes[4096];
        const ssize_t count = ::read(STDIN_FILENO, bytes, sizeof bytes);
        if (count > 0) {
            buffered.append(bytes, static_cast<std::size_t>(count));
            return true;
        }
        if (count == 0 || (errno != EINTR && errno != EAGAIN)) {
            hasEnded = true;
            return true;
        }
    }
    return false;
}

}  // namespace dvbshell
