// Wraps text to a width. Widths count characters of UTF-8, not bytes.
// Threads: any.
// Blocks:  never.
// Fails:   never. A word longer than the width stays whole.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "command_line/program.h"

namespace command_line {

/// The paragraphs of a text: the parts between empty lines.
std::vector<std::string> paragraphsOf(const std::string& text);

/// Each paragraph wrapped, with an empty line between two.
std::string wrapped(const std::string& text, std::size_t width);

constexpr std::size_t kLongestTerm = 26;

/// Two columns, both indented. The right one starts on a line of its own behind a term that is too long for the left
/// one. `text` lays out the text of a row for a width.
std::string columns(const std::vector<std::string>& terms, std::size_t indent, std::size_t width,
                    const std::function<std::string(std::size_t row, std::size_t width)>& text,
                    std::size_t longestTerm = kLongestTerm);
/// Two columns with wrapped text. Terms up to `longestTerm` fit the left one.
std::string columns(const std::vector<Row>& rows, std::size_t indent, std::size_t width,
                    std::size_t longestTerm = kLongestTerm);

}  // namespace command_line
