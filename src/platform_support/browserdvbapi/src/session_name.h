// Session names: identify the service object and every filter. The section-data queue's name ends with one.
// Threads: any.
// Blocks:  never.
// Fails:   never; the UUIDs make the names unique.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

namespace velmora::dvbservice {

/// 45 characters, PPPPPPPP-XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX in upper-case hexadecimal: the process id, then the 16
/// bytes of the UUID. The first three fields of the UUID are numbers in the machine's byte order.
std::string formatSessionName(pid_t process, const std::uint8_t* uuid);

}  // namespace velmora::dvbservice
