// How the numbers of a tree are written. The name of a field decides it, so a field looks the same in every table.
// Threads: any.
// Blocks:  never.
// Fails:   never; a field without an entry is decimal.
#pragma once

#include <string>

#include "si/description.h"

namespace si {

/// A field of `bits` bits. Hexadecimal numbers have as many digits as the field has room for; a value that its standard
/// names has the name after it, for example "0x01 (AUTOSTART)".
Node::Field numberField(const std::string& name, std::uint64_t value, unsigned int bits);

}  // namespace si
