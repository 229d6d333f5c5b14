// The transport stream of a Linux DVB adapter: tuned, and every packet of the multiplex taken.
// Threads: openDvb() and the source on the input's own, checkDvb() on any.
// Blocks:  openDvb() until the frontend has locked, five seconds at most; read(), until there are bytes or until the
//          wake-up is written.
// Fails:   with a text that names the input and the step that failed.
#pragma once

#include <memory>
#include <string>

#include "byte_source.h"
#include "input_name.h"

namespace dtvservice {

/// What is wrong with the input's properties, which no adapter is needed to see; empty when nothing is.
std::string checkDvb(const InputName& input);
/// `wakeUp`: a descriptor that becomes readable when reading is to end.
std::unique_ptr<ByteSource> openDvb(const InputName& input, int wakeUp, std::string& error);

}  // namespace dtvservice
