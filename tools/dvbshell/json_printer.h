// JsonPrinter: prints each event, result and note as a line with one JSON object, as docs/json.schema.json describes
// it. A section appears in hexadecimal, and as a tree of its fields.
// Threads: one.
// Blocks:  while writing.
// Fails:   never; replaces bytes that are not UTF-8.
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
