// Messages that belong together, and leave together: each packet costs both processes a system call, and often a change
// of process. A platform that cannot hold messages has none of these functions; their addresses are null then.
// Threads: any; one thread of a process holds at a time.
// Blocks:  never.
#pragma once

#include "frame/api.h"

namespace dtv_optional {

/// From now on a message that this thread sends waits for sendHeldMessages(), or until more wait than a packet takes,
/// or until somebody sends another one to the same peer. So messages stay in order. Hold for a moment only: peers learn
/// nothing of it meanwhile. The send of a held message succeeds, even if its peer turns out to have gone.
/// False, without effect, while a thread holds.
DTV_PLATFORM_API __attribute__((weak)) bool holdMessages();
/// Sends what is held, and ends the holding. Call it on the thread on which holdMessages() was true.
DTV_PLATFORM_API __attribute__((weak)) void sendHeldMessages();

}  // namespace dtv_optional
