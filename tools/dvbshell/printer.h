// Printer: events as a person reads them: time, what it is, what it says; tables with their entries aligned below.
// Threads: one.
// Blocks:  while writing.
// Fails:   never; a section that cannot be read is said to be so, with its first bytes.
#pragma once

#include <cstdio>
#include <string>

#include "events.h"
#include "operations.h"

namespace dvbshell {

class Printer {
public:
    /// Times are shown since the printer was made.
    explicit Printer(std::FILE* newOutput) : output_(newOutput) {}
    Printer(const Printer&) = delete;
    Printer& operator=(const Printer&) = delete;
    virtual ~Printer() = default;

    /// `ccid` is what the library says of the current channel, for channel changes.
    virtual void print(const Event& event, const std::string& ccid);
    /// A line of the shell's own.
    virtual void note(const std::string& text);
    /// What an operation gave back.
    virtual void result(const Operation& operation, const Outcome& outcome);

protected:
    std::FILE* output() const { return output_; }
    double secondsOf(Clock::time_point time) const;

private:
    void head(Clock::time_point time, const char* what, const std::string& text);
    void printPmt(const Event& event);
    void printEit(const Event& event);
    void printAit(const Event& event);
    void printApplications(const Event& event);
    void printFiltered(const Event& event);
    void printLines(const std::vector<std::string>& lines, int indent);
    void printUnreadable(const Event& event, const char* what, const std::string& error);

    std::FILE* output_;
    Clock::time_point begin = Clock::now();
};

}  // namespace dvbshell
