// Bytes of a transport stream as they come: standard input, datagrams with or without RTP, and DVB adapters.
// Threads: the input's own.   Blocks: read(), until there are bytes or until the wake-up is written.
// Fails:   openLive() with a text that names the input; a read that fails ends the bytes.
#pragma once

#include <memory>

#include "byte_source.h"
#include "input_name.h"

namespace dtvservice {

/// `wakeUp`: a descriptor that becomes readable when reading is to end.
std::unique_ptr<ByteSource> openLive(const InputName& input, int wakeUp, std::string& error);

}  // namespace dtvservice
