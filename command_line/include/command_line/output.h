// A program that could not write its output must not end as if it had.
// Threads: one.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

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

}  // namespace command_line
