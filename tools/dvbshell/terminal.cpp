// Folds and colours lines.
#include "terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <cwchar>

namespace dvbshell {

namespace {

constexpr std::size_t kEventIndent = 20;  // where the printer puts the content of an event
constexpr std::size_t kUsualWidth = 80;
constexpr std::size_t kLeastWidth = 20;

/// A character of UTF-8: its bytes, and the columns that it takes. A wrong byte is one column.
struct Character {
    std::size_t bytes = 1;
    std::size_t columns = 1;
};

Character characterAt(const std::string& text, std::size_t at) {
    // The texts are UTF-8 whatever the user's locale is.
    static const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    const locale_t before = utf8 == nullptr ? nullptr : uselocale(utf8);
    std::mbstate_t state{};
    wchar_t wide = 0;
    const std::size_t bytes = std::mbrtowc(&wide, text.data() + at, text.size() - at, &state);
    const int columns = bytes == 0 || bytes > text.size() ? -1 : wcwidth(wide);
    if (before != nullptr) {
        uselocale(before);
    }
    return columns < 0 ? Character{} : Character{bytes, static_cast<std::size_t>(columns)};
}

/// The number of bytes that fit into the columns.
std::size_t fitting(const std::string& text, std::size_t columns) {
    std::size_t at = 0;
    for (std::size_t used = 0; at < text.size();) {
        const Character next = characterAt(text, at);
        used += next.columns;
        if (used > columns) {
            break;
        }
        at += next.bytes;
    }
    return at;
}

/// The line with at most two blanks between its parts, after the indent.
std::string squeezed(const std::string& line) {
    std::string result;
    std::size_t blanks = 0;
    const std::size_t indent = line.find_first_not_of(' ');
    for (std::size_t at = 0; at < line.size(); ++at) {
        blanks = line[at] == ' ' ? blanks + 1 : 0;
        if (at < indent || blanks <= 2) {
            result += line[at];
        }
    }
    return result;
}

/// Where the kind of an event begins in "   1.234  kind ...", or npos for another line.
std::size_t kindOf(const std::string& line) {
    const std::size_t first = line.find_first_not_of(' ');
    const std::size_t after = first == std::string::npos ? first : line.find_first_not_of("0123456789.", first);
    const bool isHead = after != std::string::npos && after > first + 4 && line[after - 4] == '.' &&
                        line.compare(after, 2, "  ") == 0 && after + 2 < line.size() && line[after + 2] != ' ';
    return isHead ? after + 2 : std::string::npos;
}

std::size_t indentOf(const std::string& line, std::size_t width) {
    const std::size_t own = line.find_first_not_of(' ');
    const std::size_t wanted =
        kindOf(line) == std::string::npos ? (own == std::string::npos ? 0 : own) + 4 : kEventIndent;
    return std::min(wanted, width / 2);
}

/// Where a line that may have `most` bytes ends: between two values if half of the content fits before it, else at a
/// blank, else in a word. A blank right after the last byte that fits is a good place too.
std::size_t breakOf(const std::string& line, std::size_t most) {
    const std::size_t begin = line.find_first_not_of(' ');
    const std::size_t comma = line.rfind(", ", most - 1);
    const std::size_t gap = line.rfind("  ", most);
    const std::size_t afterComma = comma == std::string::npos ? 0 : comma + 1;
    const std::size_t between = std::max(afterComma, gap == std::string::npos ? 0 : gap);
    const std::size_t content = kindOf(line) == std::string::npos ? begin : kEventIndent;
    if (between > content && between >= (content + most) / 2) {
        return between;
    }
    const std::size_t blank = line.rfind(' ', most);
    return blank == std::string::npos || blank <= begin ? std::max(most, begin + 1) : blank;
}

std::string in(const char* colour, const std::string& text) {
    return std::string("\033[") + colour + "m" + text + "\033[0m";
}

bool wantsColours(Colour colour, bool isTerminal) {
    const char* const none = std::getenv("NO_COLOR");
    const char* const kind = std::getenv("TERM");
    const bool refused = (none != nullptr && *none != '\0') || (kind != nullptr && std::strcmp(kind, "dumb") == 0);
    return colour == Colour::always || (colour == Colour::automatic && isTerminal && !refused);
}

}  // namespace

bool parseColour(const std::string& text, Colour& colour) {
    constexpr std::pair<const char*, Colour> kNames[] = {
        {"auto", Colour::automatic}, {"always", Colour::always}, {"never", Colour::never}};
    for (const auto& [name, value] : kNames) {
        if (text == name) {
            colour = value;
            return true;
        }
    }
    return false;
}

std::size_t columnsOf(const std::string& text) {
    std::size_t columns = 0;
    for (std::size_t at = 0; at < text.size();) {
        const Character next = characterAt(text, at);
        columns += next.columns;
        at += next.bytes;
    }
    return columns;
}

std::string folded(const std::string& line, std::size_t width) {
    if (width == 0 || columnsOf(line) <= width) {
        return line;
    }
    const std::string indent(indentOf(line, width), ' ');
    std::string result;
    std::string rest = kindOf(line) == std::string::npos ? squeezed(line) : line;
    while (columnsOf(rest) > width) {
        const std::size_t end = breakOf(rest, fitting(rest, width));
        const std::size_t last = rest.find_last_not_of(' ', end - 1);
        result += rest.substr(0, last + 1) + "\n";
        const std::size_t next = rest.find_first_not_of(' ', end);
        if (next == std::string::npos) {
            return result.substr(0, result.size() - 1);
        }
        rest.replace(0, next, indent);
    }
    return result + rest;
}

std::string painted(const std::string& line) {
    constexpr const char* kDim = "2";
    constexpr const char* kBold = "1";
    constexpr const char* kCyan = "36";
    constexpr const char* kGreen = "32";
    constexpr const char* kRed = "31";
    constexpr std::pair<const char*, const char*> kHeads[] = {
        {"--- ", kBold}, {"missing: ", kRed}, {"not all arrived", kRed}, {"not tuned ", kRed}, {"all arrived", kGreen}};
    for (const auto& [head, colour] : kHeads) {
        if (line.compare(0, std::strlen(head), head) == 0) {
            return in(colour, line);
        }
    }
    const std::size_t kind = kindOf(line);
    if (kind == std::string::npos) {
        return line;
    }
    const std::size_t end = std::min(line.find(' ', kind), line.size());
    return in(kDim, line.substr(0, kind)) + in(kCyan, line.substr(kind, end - kind)) + line.substr(end);
}

Terminal::Terminal(Colour colour, std::size_t widthOfFiles)
    : isTerminal(isatty(STDOUT_FILENO) != 0), hasColours(wantsColours(colour, isTerminal)), otherwise(widthOfFiles) {
    cookie_io_functions_t functions{};
    functions.write = &Terminal::writeChunk;
    laidOut = fopencookie(this, "w", functions);
}

Terminal::~Terminal() {
    std::fclose(laidOut);
    if (!rest.empty()) {
        std::fputs(rest.c_str(), stdout);
    }
}

std::size_t Terminal::width() const {
    if (!isTerminal) {
        return otherwise;
    }
    std::size_t columns = 0;
    const char* const variable = std::getenv("COLUMNS");
    if (variable != nullptr) {
        std::from_chars(variable, variable + std::strlen(variable), columns);
    }
    winsize size{};
    if (columns == 0 && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0) {
        columns = size.ws_col;
    }
    return columns == 0 ? kUsualWidth : std::max(columns, kLeastWidth);
}

bool Terminal::failed() const {
    std::fflush(laidOut);
    return std::ferror(laidOut) != 0 || std::fflush(stdout) != 0 || std::ferror(stdout) != 0;
}

ssize_t Terminal::writeChunk(void* terminal, const char* text, std::size_t size) {
    auto& self = *static_cast<Terminal*>(terminal);
    self.rest.append(text, size);
    for (std::size_t end = 0; (end = self.rest.find('\n')) != std::string::npos; self.rest.erase(0, end + 1)) {
        if (!self.writeLine(self.rest.substr(0, end))) {
            return 0;
        }
    }
    return std::fflush(stdout) == 0 ? static_cast<ssize_t>(size) : 0;
}

bool Terminal::writeLine(const std::string& line) const {
    // A line without a blank, such as a section in hexadecimal, is there to be copied. The terminal breaks it.
    const bool isOneWord = line.find(' ') == std::string::npos;
    const std::string text = isOneWord ? line : folded(line, width());
    return std::fprintf(stdout, "%s\n", (hasColours ? painted(text) : text).c_str()) >= 0;
}

}  // namespace dvbshell
