// Writing hexadecimal digits.
#include "hex.h"

namespace dvbshell {

std::string hexOf(const std::string& bytes) {
    static const char* const kDigits = "0123456789abcdef";
    std::string digits;
    for (const char character : bytes) {
        digits += kDigits[static_cast<unsigned char>(character) >> 4U];
        digits += kDigits[static_cast<unsigned char>(character) & 0x0FU];
    }
    return digits;
}

}  // namespace dvbshell
