// Terminal: how text is laid out on the standard output. On a terminal, lines are folded at its width and the heads of
// events are coloured; in files and pipes, lines stay whole.
// Threads: one.
// Blocks:  while writing.
// Fails:   like the standard output; failed() tells.
#pragma once

#include <cstdio>
#include <string>

namespace dvbshell {

enum class Colour { automatic, always, never };

/// Reads "auto", "always" or "never"; false for other text.
bool parseColour(const std::string& text, Colour& colour);

/// Breaks a line at blanks into lines of at most `width` columns. Gives up the alignment of its parts first. Lines
/// after the first are indented as the content of an event is, or by four columns more than the line. 0 means no limit.
std::string folded(const std::string& line, std::size_t width);
/// Adds colours to the head of an event and to the heads and verdicts of the demonstration.
std::string painted(const std::string& line);
/// How many columns a UTF-8 text takes.
std::size_t columnsOf(const std::string& text);

class Terminal {
public:
    /// `widthOfFiles`: the width where the standard output is no terminal; 0 for no limit.
    explicit Terminal(Colour colour, std::size_t widthOfFiles = 0);
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    ~Terminal();

    /// A stream that lays out each line and writes it to the standard output. A line of one word stays whole.
    std::FILE* stream() const { return laidOut; }
    /// COLUMNS, or the terminal's width now, or 80 if both are unknown.
    std::size_t width() const;
    /// Whether text could not be written. Flushes first.
    bool failed() const;

private:
    static ssize_t writeChunk(void* terminal, const char* text, std::size_t size);
    bool writeLine(const std::string& line) const;

    bool isTerminal;
    bool hasColours;
    std::size_t otherwise;  // the width where the standard output is no terminal
    std::string rest;       // of a line that is not complete yet
    std::FILE* laidOut;
};

}  // namespace dvbshell
