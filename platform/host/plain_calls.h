// System calls of the message path without the C library's cancellation points, which cost two atomic steps a call in a
// process with threads. Nobody cancels the threads that make these calls.
// Threads: any.
// Fails:   as the functions of the same names: -1 with errno.
#pragma once

#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstddef>

namespace host::plain {

inline ssize_t send(int descriptor, const void* bytes, std::size_t length, int flags) {
    return syscall(SYS_sendto, descriptor, bytes, length, flags, nullptr, 0);
}

inline ssize_t recv(int descriptor, void* bytes, std::size_t length, int flags) {
    return syscall(SYS_recvfrom, descriptor, bytes, length, flags, nullptr, nullptr);
}

inline int epollWait(int sockets, epoll_event* events, int mostEvents, int milliseconds) {
    return static_cast<int>(syscall(SYS_epoll_pwait, sockets, events, mostEvents, milliseconds, nullptr, 0));
}

}  // namespace host::plain
