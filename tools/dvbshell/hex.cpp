// Writing hexadecimal digits.
#include "hex.h"

#include "message_fields.h"

namespace dvbshell {

std::string hexOf(const std::string& bytes) {
    return message_fields::hexadecimal(bytes);
}

}  // namespace dvbshell
