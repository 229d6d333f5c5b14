// Printer: events as a person reads them: time, what it is, what it says; tables with their entries aligned below.
// Threads: one.   Blocks: while writing.
// Fails:   never; a section that cannot be read is said to be so, with its first bytes.
#pragma once

#include <cstdio>
#include <string>

#include "events.h"

namespace dvbshell {

class Printer {
public:
    /// Times are shown since the printer was made.
    explicit Printer(std::FILE* newOutput) : output(newOutput) {}

    /// `ccid` is what the library says of the current channel, for channel changes.
    void print(const Event& event, const std::string& ccid);
    /// A line of the shell's own.
    void note(const std::string& text);

private:
    void head(Clock::time_point time, const char* what, const std::string& text);
    void printPmt(const Event& event);
    void printEit(const Event& event);
    void printAit(const Event& event);
    void printUnreadable(const Event& event, const char* what, const std::string& error);

    std::FILE* output;
    Clock::time_point begin = Clock::now();
};

}  // namespace dvbshell
