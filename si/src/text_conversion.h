// Converts text whose character table is known.
#pragma once

#include <string>

#include "si/section.h"

namespace si {

/// Converts the bytes after a text's character table selector to UTF-8. `encoding` is iconv's name of the table.
std::string toUtf8In(const char* encoding, Bytes text);

}  // namespace si
