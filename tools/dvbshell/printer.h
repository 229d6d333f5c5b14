// Printer: prints events for people: time, kind and content. The entries of a table follow in aligned lines.
// Threads: one.
// Blocks:  while writing.
// Fails:   never; reports an unreadable section with its first bytes.
#pragma once

#include <cstdio>
#include <string>

#include "events.h"
#include "operations.h"

namespace dvbshell {

class Printer {
public:
    /// Printed times count from the construction of the printer.
    explicit Printer(std::FILE* newOutput) : output_(newOutput) {}
    Printer(const Printer&) = delete;
    Printer& operator=(const Printer&) = delete;
    virtual ~Printer() = default;

    /// `ccid` is the library's CCID of the current channel, printed with channel changes.
    virtual void print(const Event& event, const std::string& ccid);
    /// Prints a line of the shell itself.
    virtual void note(const std::string& text);
    /// Prints the result of an operation.
    virtual void result(const Operation& operation, const Outcome& outcome);

protected:
    std::FILE* output() const { return output_; }

private:
    double secondsOf(Clock::time_point time) const;
    void head(Clock::time_point time, const char* what, const std::string& text);
    void printPmt(const Event& event);
    void printEit(const Event& event);
    void printAit(const Event& event);
    void printApplications(const Event& event);
    void printFiltered(const Event& event);
    void printValues(const Event& event);
    void printLines(const std::vector<std::string>& lines, int indent);
    void printUnreadable(const Event& event, const char* what, const std::string& error);

    std::FILE* output_;
    Clock::time_point begin = Clock::now();
};

}  // namespace dvbshell
