// Text that is safe to show: a broadcaster's or a peer's text must not steer the terminal.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <string>

namespace si {

/// The text as UTF-8; control characters, marks that reverse the direction of writing, and bytes that are no UTF-8 are
/// shown as \xNN.
std::string printable(const std::string& text);

}  // namespace si
