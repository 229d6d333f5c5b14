// Wraps text to a width.
#include "text_layout.h"

#include <algorithm>
#include <sstream>

namespace command_line {

namespace {

constexpr std::size_t kGap = 2;
constexpr std::size_t kNarrowest = 20;  // of the right column

std::size_t widthOf(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80; }));
}

/// The lines of one paragraph.
std::vector<std::string> linesOf(const std::string& paragraph, std::size_t width) {
    std::vector<std::string> lines(1);
    std::istringstream stream(paragraph);
    for (std::string word; stream >> word;) {
        if (lines.back().empty()) {
            lines.back() = word;
        } else if (widthOf(lines.back()) + 1 + widthOf(word) <= width) {
            lines.back() += " " + word;
        } else {
            lines.push_back(word);
        }
    }
    return lines;
}

std::size_t leftColumn(const std::vector<std::string>& terms, std::size_t longestTerm) {
    std::size_t left = 0;
    for (const std::string& term : terms) {
        const std::size_t width = widthOf(term);
        left = width <= longestTerm ? std::max(left, width) : left;
    }
    return left == 0 ? longestTerm : left;
}

}  // namespace

std::vector<std::string> paragraphsOf(const std::string& text) {
    std::vector<std::string> paragraphs;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find("\n\n", at), text.size());
        paragraphs.push_back(text.substr(at, end - at));
        at = end + 2;
    }
    return paragraphs;
}

std::string wrapped(const std::string& text, std::size_t width) {
    std::string result;
    for (const std::string& paragraph : paragraphsOf(text)) {
        result += result.empty() ? "" : "\n";
        for (const std::string& line : linesOf(paragraph, width)) {
            result += line + "\n";
        }
    }
    return result;
}

std::string columns(const std::vector<std::string>& terms, std::size_t indent, std::size_t width,
                    const std::function<std::string(std::size_t row, std::size_t width)>& text,
                    std::size_t longestTerm) {
    const std::size_t left = leftColumn(terms, longestTerm);
    const std::size_t start = indent + left + kGap;
    const std::size_t textWidth = width > start + kNarrowest ? width - start : kNarrowest;
    std::string result;
    for (std::size_t row = 0; row < terms.size(); ++row) {
        const std::size_t term = widthOf(terms[row]);
        result += std::string(indent, ' ') + terms[row];
        std::string gap = term <= left ? std::string(left + kGap - term, ' ') : "\n" + std::string(start, ' ');
        std::istringstream lines(text(row, textWidth));
        for (std::string line; std::getline(lines, line);) {
            result += gap + line;
            gap = "\n" + std::string(start, ' ');
        }
        result += "\n";
    }
    return result;
}

std::string columns(const std::vector<Row>& rows, std::size_t indent, std::size_t width, std::size_t longestTerm) {
    std::vector<std::string> terms;
    terms.reserve(rows.size());
    for (const Row& row : rows) {
        terms.push_back(row.term);
    }
    return columns(
        terms, indent, width,
        [&rows](std::size_t row, std::size_t textWidth) { return wrapped(rows[row].help, textWidth); }, longestTerm);
}

}  // namespace command_line
