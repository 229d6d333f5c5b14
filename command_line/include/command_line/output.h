// A program that could not write its output must not end as if it had, and a program that serves others must not wait
// for the reader of its output.
// Threads: one.
// Blocks:  checkOutputAtExit(), at the end, for a pipe or terminal that nobody reads; say() never.
// Fails:   never.
#pragma once

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace command_line {

/// From now on the process ends with exit code 1, and a line on standard error, if its standard output could not be
/// written completely. `program`: a text that stays.
inline void checkOutputAtExit(const char* program) {
    static const char* name = nullptr;
    name = program;
    std::atexit([] {
        errno = 0;
        const bool hadFailed = std::ferror(stdout) != 0;
        if (std::fflush(stdout) != 0 || hadFailed) {
            std::fprintf(stderr, "%s: cannot write the output%s%s\n", name, errno == 0 ? "" : ": ",
                         errno == 0 ? "" : std::strerror(errno));
            std::_Exit(1);
        }
    });
}

/// Whether a pipe, FIFO or terminal has room for PIPE_BUF bytes and somebody to read them. Files always have.
inline bool hasRoom(int descriptor) {
    pollfd output{descriptor, POLLOUT, 0};
    return poll(&output, 1, 0) == 1 && output.revents == POLLOUT;
}

/// Prints a line on the standard output at once. If nobody reads it now, the line is lost.
inline void say(const std::string& line) {
    const std::string text = line + "\n";
    for (std::size_t at = 0; at < text.size() && hasRoom(STDOUT_FILENO); at += PIPE_BUF) {
        std::fwrite(text.data() + at, 1, std::min<std::size_t>(PIPE_BUF, text.size() - at), stdout);
        std::fflush(stdout);
    }
}

}  // namespace command_line
