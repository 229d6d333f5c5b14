// Lines of text that fit a width.
#pragma once

#include <string>

namespace dvbshell {

/// The text with line ends, so that no line is wider than `width` characters. Lines end at blanks, and those after the
/// first start with `indent` blanks. A word that is wider than a line stays whole. Width 0 wraps nothing.
std::string wrapped(const std::string& text, std::size_t width, std::size_t indent);

}  // namespace dvbshell
