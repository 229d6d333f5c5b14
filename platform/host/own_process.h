// The number of this process, without a system call for each question.
// Threads: any.
// Blocks:  never.
// Fails:   never; a process made by clone() or _Fork() itself has its parent's number.
#pragma once

#include <sys/types.h>

namespace host {

pid_t ownProcess();

}  // namespace host
