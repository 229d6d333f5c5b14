// A program may be started with its standard input, output or error closed. The next file or socket that it opens would
// then get that number, and would get what the program prints or logs.
// Threads: one, before the program opens anything.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <initializer_list>

namespace command_line {

/// Keeps the numbers 0 to 2 of closed descriptors occupied. To read from them, or to write to them, fails as before.
inline void keepStandardDescriptors() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) < 0) {
            // All lower numbers are occupied, so this one is given.
            open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

}  // namespace command_line
