// Looks up the parts of a description.
#include "command_line/program.h"

#include <algorithm>
#include <iterator>
#include <sstream>

namespace command_line {

std::vector<Option> allOptions(const Program& program) {
    std::vector<Option> options = program.options;
    options.push_back({"help",
                       "",
                       program.verbs.empty() ? "print this help" : "print this help; with a command, its help",
                       {},
                       {},
                       {},
                       {}});
    if (!program.isPrompt) {
        options.push_back({"version", "", "print the version"});
    }
    return options;
}

std::vector<Option> optionsOf(const Program& program, const Verb& verb) {
    std::vector<Option> options;
    std::copy_if(program.options.begin(), program.options.end(), std::back_inserter(options),
                 [&verb](const Option& option) {
                     return std::find(option.verbs.begin(), option.verbs.end(), verb.name) != option.verbs.end();
                 });
    return options;
}

std::vector<const Verb*> allVerbs(const Program& program) {
    std::vector<const Verb*> verbs;
    for (const VerbGroup& group : program.verbs) {
        for (const Verb& verb : group.verbs) {
            verbs.push_back(&verb);
        }
    }
    return verbs;
}

const Verb* findVerb(const Program& program, const std::vector<std::string>& words) {
    const Verb* found = nullptr;
    for (const Verb* const verb : allVerbs(program)) {
        const std::vector<std::string> name = wordsOf(*verb);
        const bool matches = name.size() <= words.size() && std::equal(name.begin(), name.end(), words.begin());
        if (matches && (found == nullptr || name.size() > wordsOf(*found).size())) {
            found = verb;
        }
    }
    return found;
}

std::vector<std::string> wordsOf(const Verb& verb) {
    std::istringstream stream(verb.name);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

std::string synopsis(const Verb& verb) {
    std::string text = verb.name;
    for (const Argument& argument : verb.arguments) {
        text += " " + argument.name;
    }
    return text;
}

std::string synopsis(const Option& option) {
    return "--" + option.name + (option.value.empty() ? "" : " " + option.value);
}

}  // namespace command_line
