// ArgumentReader: the values of a verb's arguments and options. Keeps the first error.
// Threads: any.
// Blocks:  never.
// Fails:   with a text that names the argument and its valid values.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "command_line/arguments.h"
#include "triplet.h"

namespace dvbshell {

constexpr unsigned int kMostPid = 0x1FFF;
constexpr unsigned int kMostNumber16 = 0xFFFF;
constexpr unsigned int kMostByte = 0xFF;

class ArgumentReader {
public:
    explicit ArgumentReader(const command_line::Arguments& newArguments) : all(newArguments) {}

    const command_line::Arguments& arguments() const { return all; }
    bool hasArgument(std::size_t index = 0) const { return index < all.operands.size(); }
    std::string argument(std::size_t index = 0) const { return hasArgument(index) ? all.operands[index] : ""; }
    /// The first one.
    std::optional<std::string> optionalArgument() const {
        return hasArgument() ? std::make_optional(argument()) : std::nullopt;
    }

    unsigned int number(const std::string& name, const std::string& text, unsigned int most);
    Triplet triplet(const std::string& text);
    std::string bytes(const std::string& name, const std::string& text);
    /// The value of an option that is a number.
    std::optional<unsigned int> option(const std::string& name, unsigned int most);
    /// --seconds.
    std::optional<std::chrono::seconds> seconds();

    /// Keeps the error, unless there is one already.
    void refuse(const std::string& newError);
    const std::string& error() const { return firstError; }

private:
    const command_line::Arguments& all;
    std::string firstError;
};

}  // namespace dvbshell
