// Live sources of transport stream bytes: standard input, datagrams with or without RTP, and DVB adapters.
// Threads: the input's own.
// Blocks:  read() until there are bytes or the wake-up descriptor is written to.
// Fails:   openLive() with a text that names the input; a failed read ends the bytes.
#pragma once

#include <memory>

#include "byte_source.h"
#include "input_name.h"

namespace dtvservice {

/// `wakeUp`: a descriptor that becomes readable when reading must end.
std::unique_ptr<ByteSource> openLive(const InputName& input, int wakeUp, std::string& error);

}  // namespace dtvservice
