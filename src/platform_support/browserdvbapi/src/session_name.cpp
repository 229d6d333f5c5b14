// The text of a session name, piece by piece.
#include "session_name.h"

#include <boost/format.hpp>
#include <cstring>
#include <sstream>

namespace velmora::dvbservice {

namespace {

template <typename Number>
Number nativeNumber(const std::uint8_t* bytes) {
    Number number;
    std::memcpy(&number, bytes, sizeof number);
    return number;
}

}  // namespace

std::string formatSessionName(pid_t process, const std::uint8_t* uuid) {
    // Single bytes are widened: as they are, they would print as characters.
    const auto byte = [uuid](int index) { return static_cast<unsigned short>(uuid[index]); };
    std::ostringstream text;
    text << boost::format("%08X-") % static_cast<unsigned long>(process);
    text << boost::format("%08X-") % nativeNumber<std::uint32_t>(uuid);
    text << boost::format("%04X-") % nativeNumber<std::uint16_t>(uuid + 4);
    text << boost::format("%04X-") % nativeNumber<std::uint16_t>(uuid + 6);
    text << boost::format("%02X") % byte(8) << boost::format("%02X-") % byte(9);
    for (int index = 10; index < 16; ++index) {
        text << boost::format("%02X") % byte(index);
    }
    return text.str();
}

}  // namespace velmora::dvbservice
