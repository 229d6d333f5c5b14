// Lets tests observe and replace the RPC layer's calls to the C library and to the platform. The linker redirects the
// calls (--wrap), so the library needs no change. By default every call goes to its normal target.
// Threads: any.
// Locks:   one mutex guards the recorded data; it is not held during a hook.
#pragma once

#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "frame/process.h"

namespace seams {

/// Clears everything: calls go to their normal targets.
void reset();

// --- the heap ------------------------------------------------------------------------------------------------------

/// Starts to count the allocations of malloc and calloc. Buffers of malloc start with non-zero bytes.
void watchHeap();
/// Sizes of the allocations so far, in order.
std::vector<std::size_t> allocations();
/// The allocations that are not freed yet.
std::vector<void*> heldBuffers();
/// Makes the allocation with that number, counted from 0, fail.
void failAllocation(std::size_t number);

// --- locks and lines -----------------------------------------------------------------------------------------------

/// Counts how often this mutex is taken from now on.
void watchMutex(const pthread_mutex_t& mutex);
std::size_t timesLocked();
/// Called on the writing thread before each log line, when the library checks the level.
void setLineHook(std::function<void()> hook);

// --- the transport -------------------------------------------------------------------------------------------------

/// Addresses of the addressing objects that were passed to sends.
std::vector<const frame::MsgIds*> sentIds();
/// Sets the result of every handler registration; the handler is registered anyway.
void setRegistrationResult(int result);

// --- the process model ---------------------------------------------------------------------------------------------

/// Replaces the look-up of an interface.
using LookUp = std::function<int(boost::shared_ptr<frame::Interface>& reference, const std::string& name)>;
void setLookUp(LookUp lookUp);
/// Sets the result of publishing an interface; the interface is published anyway.
void setPublishResult(int result);
/// Replaces each step of a marshalling member's base.
void setBaseStep(std::function<int()> step);
/// Called before the base stores a member's service name. May throw.
void setNameHook(std::function<void()> hook);

}  // namespace seams
