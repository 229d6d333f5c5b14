// Live sources of transport stream bytes: standard input, datagrams with or without RTP, and DVB adapters.
// Threads: the input's own.
// Blocks:  read() until there are bytes or the wake-up descriptor is written to.
// Fails:   openLive() with a text that names the input; a failed read ends the bytes.
#pragma once

#include <memory>

#include "byte_source.h"
#include "input_name.h"
#include "input_report.h"

namespace dtvservice {

/// `wakeUp`: a descriptor that becomes readable when reading must end. Lost RTP packets are added to the counts, which
/// must outlive the source.
std::unique_ptr<ByteSource> openLive(const InputName& input, int wakeUp, InputCounts& counts, std::string& error);

}  // namespace dtvservice
