// Text whose character table is known already.
#pragma once

#include <string>

#include "si/section.h"

namespace si {

/// The bytes behind a text's mark of its character table as UTF-8; `encoding` by its name for iconv.
std::string toUtf8In(const char* encoding, Bytes text);

}  // namespace si
