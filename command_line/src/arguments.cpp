// Reads command lines with getopt_long.
#include "command_line/arguments.h"

#include <getopt.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>

#include "standard_options.h"

namespace command_line {

namespace {

/// The options as getopt_long takes them; an option's value is its index plus one. The result points into `options`.
std::vector<option> getoptArray(const std::vector<Option>& options) {
    std::vector<option> array;
    array.reserve(options.size() + 1);
    for (const Option& each : options) {
        array.push_back({each.name.c_str(), each.value.empty() ? no_argument : required_argument, nullptr,
                         static_cast<int>(array.size()) + 1});
    }
    array.push_back({});
    return array;
}

std::string problemOf(int result, const std::string& word) {
    const std::string name = word.substr(0, word.find('='));
    if (result == ':') {
        return name + " needs a value";
    }
    return optopt == 0 ? "unknown option " + name : name + " takes no value";
}

/// Takes the options out of `argv` (which ends with a null pointer), and leaves the words.
bool takeOptions(const std::vector<Option>& options, std::vector<char*>& argv, Arguments& arguments,
                 std::string& error) {
    const std::vector<option> array = getoptArray(options);
    const int argc = static_cast<int>(argv.size()) - 1;
    opterr = 0;
    optind = 1;
    while (optind < argc) {
        const std::string word = argv[static_cast<std::size_t>(optind)];
        if (word == "--") {
            arguments.words.insert(arguments.words.end(), argv.begin() + optind + 1, argv.end() - 1);
            return true;
        }
        if (word.compare(0, 2, "--") != 0) {
            arguments.words.push_back(word);
            ++optind;
            continue;
        }
        const int result = getopt_long(argc, argv.data(), "+:", array.data(), nullptr);
        if (result == ':' || result == '?') {
            error = problemOf(result, word);
            return false;
        }
        arguments.options.emplace_back(array[static_cast<std::size_t>(result) - 1].name,
                                       optarg == nullptr ? "" : optarg);
    }
    return true;
}

std::string countProblem(const std::vector<Argument>& known, const std::vector<std::string>& given) {
    std::vector<std::string> needed;
    for (const Argument& argument : known) {
        if (argument.name.front() != '[') {
            needed.push_back(argument.name);
        }
    }
    const bool repeats = !known.empty() && known.back().name.find("...") != std::string::npos;
    if (given.size() < needed.size()) {
        return needed[given.size()] + " is missing";
    }
    return given.size() > known.size() && !repeats ? "unexpected argument " + given[known.size()] : "";
}

/// The first word of "ca insert" alone gets a list of what may follow.
std::string unknownVerb(const Program& program, const std::vector<std::string>& words) {
    std::string known;
    for (const Verb* const verb : allVerbs(program)) {
        if (verb->name.compare(0, words[0].size() + 1, words[0] + " ") == 0) {
            known += (known.empty() ? "" : ", ") + synopsis(*verb).substr(words[0].size() + 1);
        }
    }
    return known.empty() ? "unknown command " + words[0] : words[0] + " takes one of: " + known;
}

std::string problemOfWords(const Program& program, Arguments& arguments) {
    arguments.operands = arguments.words;
    if (program.verbs.empty()) {
        // A program decides itself whether it needs its arguments: an option may replace them.
        return arguments.words.size() > program.arguments.size() ? countProblem(program.arguments, arguments.words)
                                                                 : "";
    }
    if (arguments.words.empty()) {
        return "";
    }
    arguments.verb = findVerb(program, arguments.words);
    if (arguments.verb == nullptr) {
        return unknownVerb(program, arguments.words);
    }
    arguments.operands.erase(arguments.operands.begin(),
                             arguments.operands.begin() + static_cast<std::ptrdiff_t>(wordsOf(*arguments.verb).size()));
    const std::string problem = countProblem(arguments.verb->arguments, arguments.operands);
    return problem.empty() ? "" : arguments.verb->name + ": " + problem;
}

std::string problemOfOptions(const Program& program, const Arguments& arguments) {
    for (const Option& option : program.options) {
        const std::string verb = arguments.verb == nullptr ? "" : arguments.verb->name;
        const bool fits =
            option.verbs.empty() || std::find(option.verbs.begin(), option.verbs.end(), verb) != option.verbs.end();
        if (arguments.has(option.name) && !fits) {
            std::string verbs;
            for (const std::string& each : option.verbs) {
                verbs += (verbs.empty() ? "" : ", ") + each;
            }
            return "--" + option.name + " is an option of " + verbs;
        }
    }
    return "";
}

}  // namespace

bool Arguments::has(const std::string& option) const {
    return value(option).has_value();
}

std::optional<std::string> Arguments::value(const std::string& option) const {
    const std::vector<std::string> all = values(option);
    return all.empty() ? std::nullopt : std::make_optional(all.back());
}

std::vector<std::string> Arguments::values(const std::string& option) const {
    std::vector<std::string> found;
    for (const auto& [name, value] : options) {
        if (name == option) {
            found.push_back(value);
        }
    }
    return found;
}

std::optional<Arguments> parse(const Program& program, const std::vector<std::string>& words, std::string& error) {
    std::vector<std::string> copies = words;
    copies.insert(copies.begin(), program.name);
    std::vector<char*> argv;
    argv.reserve(copies.size() + 1);
    for (std::string& word : copies) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    Arguments arguments;
    if (!takeOptions(parsedOptions(program), argv, arguments, error)) {
        return std::nullopt;
    }
    if (isAnsweredByItself(arguments)) {
        arguments.verb = findVerb(program, arguments.words);
        return arguments;
    }
    error = problemOfWords(program, arguments);
    if (error.empty()) {
        error = problemOfOptions(program, arguments);
    }
    return error.empty() ? std::make_optional(arguments) : std::nullopt;
}

Arguments parseOrEnd(const Program& program, int argc, char** argv) {
    std::string error;
    const std::optional<Arguments> arguments = parse(program, {argv + 1, argv + argc}, error);
    if (!arguments) {
        endWithUsageError(program, error);
    }
    if (isAnsweredByItself(*arguments)) {
        std::fputs(answer(program, *arguments).c_str(), stdout);
        std::exit(0);
    }
    return *arguments;
}

void endWithUsageError(const Program& program, const std::string& error) {
    std::fprintf(stderr, "%s: %s\ntry: %s --help\n", program.name.c_str(), error.c_str(), program.name.c_str());
    std::exit(kUsageError);
}

std::optional<std::uint64_t> parseNumber(const std::string& text) {
    const bool isHexadecimal = text.compare(0, 2, "0x") == 0 || text.compare(0, 2, "0X") == 0;
    const char* const begin = text.data() + (isHexadecimal ? 2 : 0);
    const char* const end = text.data() + text.size();
    std::uint64_t number = 0;
    const auto [stop, failure] = std::from_chars(begin, end, number, isHexadecimal ? 16 : 10);
    return failure == std::errc() && stop == end ? std::make_optional(number) : std::nullopt;
}

std::uint64_t numberOrEnd(const Program& program, const std::string& name, const std::string& text, std::uint64_t least,
                          std::uint64_t most) {
    const std::optional<std::uint64_t> number = parseNumber(text);
    if (!number || *number < least || *number > most) {
        endWithUsageError(program, name + ": \"" + text + "\" is not a number from " + std::to_string(least) + " to " +
                                       std::to_string(most));
    }
    return *number;
}

}  // namespace command_line
