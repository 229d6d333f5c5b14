// Makes text safe to show: text from a broadcaster or a peer must not control the terminal.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <string>

namespace si {

/// The text as UTF-8. Shows control characters, marks that change the writing direction, and bytes that are not UTF-8
/// as \xNN.
std::string printable(const std::string& text);

}  // namespace si
