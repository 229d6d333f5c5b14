// Formats session names.
#include "session_name.h"

#include <boost/format.hpp>
#include <cstring>
#include <locale>
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
    // Widened, because single bytes would print as characters.
    const auto byte = [uuid](int index) { return static_cast<unsigned short>(uuid[index]); };
    // Fixed locale: the browser's global locale may group digits.
    const auto piece = [](const char* shape) { return boost::format(shape, std::locale::classic()); };
    std::ostringstream text;
    text << piece("%08X-") % static_cast<unsigned long>(process);
    text << piece("%08X-") % nativeNumber<std::uint32_t>(uuid);
    text << piece("%04X-") % nativeNumber<std::uint16_t>(uuid + 4);
    text << piece("%04X-") % nativeNumber<std::uint16_t>(uuid + 6);
    text << piece("%02X") % byte(8) << piece("%02X-") % byte(9);
    for (int index = 10; index < 16; ++index) {
        text << piece("%02X") % byte(index);
    }
    return text.str();
}

}  // namespace velmora::dvbservice
