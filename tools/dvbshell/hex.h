// Bytes as hexadecimal text.
#pragma once

#include <string>

namespace dvbshell {

/// Two lower-case digits a byte.
std::string hexOf(const std::string& bytes);

}  // namespace dvbshell
