// Answers --help, --version, --print-man and --print-completion.
#include "standard_options.h"

#include <algorithm>

#include "command_line/generated.h"
#include "command_line/help.h"

namespace command_line {

namespace {

const char* const kStandard[] = {"help", "version", "print-man", "print-completion"};

}  // namespace

std::vector<Option> parsedOptions(const Program& program) {
    std::vector<Option> options = allOptions(program);
    if (program.isPrompt) {
        return options;
    }
    for (const char* const hidden : {"print-man", "print-completion"}) {
        options.push_back({hidden, "", ""});
    }
    return options;
}

bool isAnsweredByItself(const Arguments& arguments) {
    return std::any_of(std::begin(kStandard), std::end(kStandard),
                       [&arguments](const char* option) { return arguments.has(option); });
}

std::string answer(const Program& program, const Arguments& arguments) {
    if (arguments.has("print-man")) {
        return manPage(program);
    }
    if (arguments.has("print-completion")) {
        return bashCompletion(program);
    }
    if (arguments.has("help")) {
        return arguments.verb == nullptr ? helpText(program, helpWidth())
                                         : helpText(program, *arguments.verb, helpWidth());
    }
    return versionText(program);
}

}  // namespace command_line
