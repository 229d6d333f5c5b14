// Session names: they name the service object and every filter, and end the section-data queue's name.
// Threads: any.
// Blocks:  never.
// Fails:   never; names differ because the UUIDs in them do.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

namespace velmora::dvbservice {

/// 45 characters, PPPPPPPP-XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX in upper-case hexadecimal: the process id, then the 16
/// bytes of the UUID, its first three fields as numbers in the machine's own byte order.
std::string formatSessionName(pid_t process, const std::uint8_t* uuid);

}  // namespace velmora::dvbservice
