// JsonPrinter: events and results as one JSON object a line; sections in hexadecimal, and read where they can be.
// Threads: one.
// Blocks:  while writing.
// Fails:   never; bytes that are not UTF-8 are replaced.
#pragma once

#include <cstdio>

#include "printer.h"

namespace dvbshell {

class JsonPrinter : public Printer {
public:
    explicit JsonPrinter(std::FILE* newOutput) : Printer(newOutput) {}

    void print(const Event& event, const std::string& ccid) override;
    void note(const std::string& text) override;
    void result(const Operation& operation, const Outcome& outcome) override;
};

}  // namespace dvbshell
