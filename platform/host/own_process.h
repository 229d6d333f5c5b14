// The number of this process, without a system call for each question.
// Threads: any.
// Blocks:  never.
// Fails:   never; where the kernel does not clear a page for forked processes, each question is a system call.
#pragma once

#include <sys/types.h>

namespace host {

pid_t ownProcess();

}  // namespace host
