// A browser may run with its standard input, output or error closed. The next socket would then get that number, and
// would send what the browser prints to the DTV service. So the platform keeps no descriptor with a number below 3.
// Threads: any.
// Blocks:  never.
// Fails:   as the system call that made the descriptor: -1 and errno.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace host {

/// Takes a new descriptor, or -1, and returns it under a number above those of the standard descriptors.
inline int aboveStandard(int descriptor) {
    if (descriptor < 0 || descriptor > STDERR_FILENO) {
        return descriptor;
    }
    const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int error = errno;
    close(descriptor);
    errno = error;
    return moved;
}

}  // namespace host
