// The calls that the RPC layer makes of the C library and of the platform, seen and answered by a test. The linker
// leads them here (--wrap), so the library has no part in it. Until a test asks for more, every call goes where it
// would. Threads: any. Locks:   one mutex guards what is kept; no hook is called while it is held.
#pragma once

#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "frame/process.h"

namespace seams {

/// Forgets everything: calls go where they would.
void reset();

// --- the heap ------------------------------------------------------------------------------------------------------

/// Begins to count what malloc and calloc give. Buffers of malloc begin with bytes that are not zero.
void watchHeap();
/// Sizes of the allocations so far, in their order.
std::vector<std::size_t> allocations();
/// The allocations that are not freed yet.
std::vector<void*> heldBuffers();
/// Lets the allocation with that number, counted from 0, find no memory.
void failAllocation(std::size_t number);

// --- locks and lines -----------------------------------------------------------------------------------------------

/// Counts how often this mutex is taken from now on.
void watchMutex(const pthread_mutex_t& mutex);
std::size_t timesLocked();
/// Called before each log line, when the library asks for its level, on the thread that writes it.
void setLineHook(std::function<void()> hook);

// --- the transport -------------------------------------------------------------------------------------------------

/// The addressing objects that sends were given, by address.
std::vector<const frame::MsgIds*> sentIds();
/// What every registration of a handler answers; the handler is registered all the same.
void setRegistrationResult(int result);

// --- the process model ---------------------------------------------------------------------------------------------

/// Takes the place of the look-up of an interface.
using LookUp = std::function<int(boost::shared_ptr<frame::Interface>& reference, const std::string& name)>;
void setLookUp(LookUp lookUp);
/// What publishing an interface answers; it is published all the same.
void setPublishResult(int result);
/// Takes the place of each step of a marshalling member's base.
void setBaseStep(std::function<int()> step);
/// Called before the base keeps a member's service name. May throw.
void setNameHook(std::function<void()> hook);

}  // namespace seams
