// Finds the words that fit.
#include "completion.h"

#include <algorithm>

#include "verbs.h"
#include "words.h"

namespace dvbshell {

namespace {

using command_line::Completion;
using command_line::Option;
using command_line::Program;
using command_line::Verb;

std::vector<std::string> blankSeparated(const std::string& line) {
    std::vector<std::string> words;
    for (const std::string& word : split(line, ' ')) {
        if (!word.empty()) {
            words.push_back(word);
        }
    }
    return words;
}

std::vector<std::string> verbNames(const Program& program) {
    std::vector<std::string> names;
    for (const Verb* const verb : command_line::allVerbs(program)) {
        names.push_back(verb->name);
    }
    return names;
}

const Option* findOption(const Program& program, const std::string& word) {
    const auto found = std::find_if(program.options.begin(), program.options.end(),
                                    [&word](const Option& option) { return word == "--" + option.name; });
    return found == program.options.end() ? nullptr : &*found;
}

std::vector<std::string> optionNames(const Program& program, const std::string& verb) {
    std::vector<std::string> names = {"--help"};
    for (const Option& option : program.options) {
        if (option.verbs.empty() || std::find(option.verbs.begin(), option.verbs.end(), verb) != option.verbs.end()) {
            names.push_back("--" + option.name);
        }
    }
    return names;
}

std::vector<std::string> valuesOf(const Completion& completion, const std::set<std::string>& channels) {
    if (completion.kind == Completion::Kind::output) {
        return {channels.begin(), channels.end()};
    }
    return completion.words;
}

/// The words before the one that is completed; the first is the verb.
std::vector<std::string> argumentValues(const Program& program, const std::vector<std::string>& before,
                                        const std::set<std::string>& channels) {
    const Verb* const verb = command_line::findVerb(program, {before[0]});
    if (verb == nullptr) {
        return {};
    }
    std::size_t index = 0;
    for (std::size_t at = 1; at < before.size(); ++at) {
        const Option* const option = findOption(program, before[at]);
        if (option == nullptr) {
            ++index;
        } else if (!option->value.empty()) {
            ++at;
        }
    }
    if (verb->name == "help") {
        return index == 0 ? verbNames(program) : std::vector<std::string>();
    }
    return index < verb->arguments.size() ? valuesOf(verb->arguments[index].completion, channels)
                                          : std::vector<std::string>();
}

std::vector<std::string> candidates(const Program& program, const std::vector<std::string>& before,
                                    const std::string& begun, const std::set<std::string>& channels) {
    if (before.empty()) {
        return verbNames(program);
    }
    const Option* const option = findOption(program, before.back());
    if (option != nullptr && !option->value.empty()) {
        return valuesOf(option->completion, channels);
    }
    return begun.compare(0, 1, "-") == 0 ? optionNames(program, before[0]) : argumentValues(program, before, channels);
}

}  // namespace

std::vector<std::string> completionsOf(const std::string& line, const std::set<std::string>& channels) {
    std::vector<std::string> before = blankSeparated(line);
    std::string begun;
    if (!line.empty() && line.back() != ' ') {
        begun = before.back();
        before.pop_back();
    }
    std::vector<std::string> words = candidates(describe(Place::prompt), before, begun, channels);
    words.erase(std::remove_if(words.begin(), words.end(),
                               [&begun](const std::string& word) { return word.compare(0, begun.size(), begun) != 0; }),
                words.end());
    std::sort(words.begin(), words.end());
    return words;
}

std::string commonBeginning(const std::vector<std::string>& words) {
    std::string common = words.empty() ? "" : words.front();
    for (const std::string& word : words) {
        const auto end = std::mismatch(common.begin(), common.end(), word.begin(), word.end()).first;
        common.erase(end, common.end());
    }
    return common;
}

}  // namespace dvbshell
