// Reads a command line as its description says.
// Threads: one, because getopt_long has state.
// Blocks:  never.
// Fails:   with a text that names the wrong word. The functions with OrEnd print it and end the process.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "command_line/program.h"

namespace command_line {

/// The exit code after a wrong command line.
constexpr int kUsageError = 2;

/// A command line that follows its description.
class Arguments {
public:
    bool has(const std::string& option) const;
    /// The last value that the option has on the command line.
    std::optional<std::string> value(const std::string& option) const;
    /// All values, in their order.
    std::vector<std::string> values(const std::string& option) const;

    std::vector<std::pair<std::string, std::string>> options;  ///< names with values, in their order
    const Verb* verb = nullptr;                                ///< null if the program has none or no word is given
    std::vector<std::string> words;                            ///< all words that are not options, the verb included
    std::vector<std::string> operands;                         ///< the words after the verb
};

/// Reads the words after the program's name. Checks options, the verb, the number of its arguments, and that it takes
/// the options. A word with one dash is no option, so negative numbers need no quoting; after "--" no word is an
/// option.
std::optional<Arguments> parse(const Program& program, const std::vector<std::string>& words, std::string& error);

/// The same for main(). Answers --help and --version, and ends the process after them or after an error.
Arguments parseOrEnd(const Program& program, int argc, char** argv);

/// Prints "NAME: error" and the way to the help, and ends the process with kUsageError.
[[noreturn]] void endWithUsageError(const Program& program, const std::string& error);

/// A number in decimal, or in hexadecimal after 0x; nothing else.
std::optional<std::uint64_t> parseNumber(const std::string& text);
/// A number of an option or argument, between two bounds. `name` is for the error: "--seconds", "SLOT".
std::uint64_t numberOrEnd(const Program& program, const std::string& name, const std::string& text, std::uint64_t least,
                          std::uint64_t most);

}  // namespace command_line
