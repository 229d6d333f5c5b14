// The transport stream of a Linux DVB adapter: tunes the adapter and receives all packets of the multiplex.
// Threads: openDvb() and the source on the input's own thread, checkDvb() on any.
// Blocks:  openDvb() until the frontend has locked, at most five seconds; read() until there are bytes. Writing to the
//          wake-up descriptor ends both.
// Fails:   with a text that names the input and the failed step.
#pragma once

#include <memory>
#include <string>

#include "byte_source.h"
#include "input_name.h"

namespace dtvservice {

/// What is wrong with the input's properties, or empty. Needs no adapter.
std::string checkDvb(const InputName& input);
/// `wakeUp`: a descriptor that becomes readable when reading must end.
std::unique_ptr<ByteSource> openDvb(const InputName& input, int wakeUp, std::string& error);

}  // namespace dtvservice
