// Bytes as hexadecimal text.
#pragma once

#include <string>

namespace dvbshell {

/// Two lower-case digits for each byte.
std::string hexOf(const std::string& bytes);

}  // namespace dvbshell
