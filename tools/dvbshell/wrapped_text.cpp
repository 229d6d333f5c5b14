// Wraps text at blanks.
#include "wrapped_text.h"

namespace dvbshell {

namespace {

/// Characters of UTF-8 text; continuation bytes do not count.
std::size_t charactersOf(const std::string& text) {
    std::size_t count = 0;
    for (const char byte : text) {
        count += (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U ? 1 : 0;
    }
    return count;
}

}  // namespace

std::string wrapped(const std::string& text, std::size_t width, std::size_t indent) {
    if (width == 0) {
        return text;
    }
    std::string lines;
    std::size_t column = 0;
    bool hasWord = false;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t wordAt = text.find_first_not_of(' ', at);
        wordAt = wordAt == std::string::npos ? text.size() : wordAt;
        const std::size_t end = std::min(text.find(' ', wordAt), text.size());
        const std::string word = text.substr(wordAt, end - wordAt);
        const std::size_t blanks = wordAt - at;
        if (hasWord && !word.empty() && column + blanks + charactersOf(word) > width) {
            lines += "\n" + std::string(indent, ' ') + word;
            column = indent + charactersOf(word);
        } else {
            lines += std::string(blanks, ' ') + word;
            column += blanks + charactersOf(word);
        }
        hasWord = true;
        at = end;
    }
    return lines;
}

}  // namespace dvbshell
