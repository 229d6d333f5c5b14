// Splits lines.
#include "words.h"

#include <optional>

namespace dvbshell {

bool splitWords(const std::string& line, std::vector<std::string>& words, std::string& error) {
    std::optional<std::size_t> quote;  // position of the open quote
    bool inWord = false;
    words.clear();
    for (std::size_t at = 0; at < line.size(); ++at) {
        const bool blank = line[at] == ' ' || line[at] == '\t';
        if (blank && !quote) {
            inWord = false;
            continue;
        }
        if (!inWord) {
            words.emplace_back();
            inWord = true;
        }
        if (quote && line[at] == line[*quote]) {
            quote.reset();
        } else if (!quote && (line[at] == '"' || line[at] == '\'')) {
            quote = at;
        } else {
            words.back() += line[at];
        }
    }
    if (quote) {
        error = std::string("the ") + (line[*quote] == '"' ? "double" : "single") + " quote at character " +
                std::to_string(*quote + 1) + " is not closed";
    }
    return !quote;
}

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts(1);
    for (const char character : text) {
        if (character == separator) {
            parts.emplace_back();
        } else {
            parts.back() += character;
        }
    }
    return parts;
}

}  // namespace dvbshell
