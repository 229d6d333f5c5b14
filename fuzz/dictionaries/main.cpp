// fuzz_dictionary FILE: writes the words of the message catalogue as a dictionary for libFuzzer: identifiers as they
// travel, names of messages and fields as in JSON, and named values.
#include <cstdio>
#include <set>
#include <string>

#include "message_fields.h"

namespace {

std::string quoted(const std::string& text) {
    std::string entry = "\"";
    for (const char character : text) {
        entry += character == '"' || character == '\\' ? std::string("\\") + character : std::string(1, character);
    }
    return entry + "\"";
}

std::string identifierEntry(std::uint32_t identifier) {
    std::string entry = "\"";
    for (unsigned int shift = 32; shift > 0; shift -= 8) {
        char digits[8];
        std::snprintf(digits, sizeof digits, "\\x%02X", static_cast<unsigned int>(identifier >> (shift - 8) & 0xFFU));
        entry += digits;
    }
    return entry + "\"";
}

std::set<std::string> entries() {
    std::set<std::string> all;
    for (const message_fields::Message& message : message_fields::messages()) {
        if (message.identifier != 0) {
            all.insert(identifierEntry(message.identifier));
        }
    }
    for (const message_fields::Field& field : message_fields::fields()) {
        all.insert(quoted("\"" + std::string(field.name) + "\":"));
        for (const message_fields::NamedValue& value : field.form->names) {
            all.insert(quoted(value.name));
        }
    }
    return all;
}

}  // namespace

int main(int argc, char** argv) {
    std::FILE* const file = argc == 2 ? std::fopen(argv[1], "we") : nullptr;
    if (file == nullptr) {
        std::fprintf(stderr, "usage: fuzz_dictionary FILE\n");
        return 2;
    }
    for (const std::string& entry : entries()) {
        std::fprintf(file, "%s\n", entry.c_str());
    }
    return std::fclose(file) == 0 ? 0 : 1;
}
