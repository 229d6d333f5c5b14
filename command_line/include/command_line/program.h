// The description of a command-line program. Parsing, help, man page and completion come from it.
// Texts are plain: an empty line separates paragraphs, and lines are wrapped where they are printed.
// Threads: any, when nobody changes the description.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <string>
#include <vector>

namespace command_line {

/// What a shell offers for a value.
struct Completion {
    enum class Kind { nothing, files, words, output };
    Kind kind = Kind::nothing;
    std::vector<std::string> words = {};
    std::string command = {};  ///< prints one candidate on each line; errors are ignored
};

inline Completion anyFile() {
    return {Completion::Kind::files, {}, {}};
}
inline Completion oneOf(std::vector<std::string> words) {
    return {Completion::Kind::words, std::move(words), {}};
}
inline Completion outputOf(std::string command) {
    return {Completion::Kind::output, {}, std::move(command)};
}

/// A term and its explanation.
struct Row {
    std::string term = {};
    std::string help = {};
};

/// "--name VALUE". Options may stand anywhere on the command line.
struct Option {
    std::string name = {};                ///< without dashes
    std::string value = {};               ///< the value's name in the help; empty if the option takes none
    std::string help = {};                ///< after it come `rows`, then `after`
    Completion completion = {};           ///< of the value
    std::vector<std::string> verbs = {};  ///< the verbs that take the option; empty for all
    std::vector<Row> rows = {};           ///< the forms of the value
    std::string after = {};
};

/// An argument without dashes. The name "[NAME]" marks an argument that may be missing, also before one that may not;
/// "NAME..." and "[NAME...]" mark the last one if it takes all further words.
struct Argument {
    std::string name = {};
    Completion completion = {};
};

/// A command of a program. The name may have several words, for example "ca insert".
struct Verb {
    std::string name = {};
    std::vector<Argument> arguments = {};
    std::string help = {};     ///< one line
    std::string text = {};     ///< more, for the verb's own help; may be empty
    std::string example = {};  ///< command lines; may be empty
};

struct VerbGroup {
    std::string title = {};
    std::vector<Verb> verbs = {};
};

struct Program {
    std::string name = {};
    std::string summary = {};     ///< one line, for the head of the man page; without a full stop
    std::vector<Row> usage = {};  ///< what follows the name, and what the call does
    std::string description = {};
    std::vector<Argument> arguments = {};  ///< of a program without verbs
    std::vector<VerbGroup> verbs = {};
    std::vector<Option> options = {};  ///< without --help and --version
    std::vector<Row> exitStatuses = {};
    std::vector<Row> environment = {};
    std::vector<Row> files = {};
    std::vector<Row> examples = {};         ///< a command line, and what it does
    std::vector<std::string> seeAlso = {};  ///< names of programs
    bool isPrompt = false;                  ///< of the standard options it has only --help
};

/// The program's options, then --help and, unless it is a prompt, --version.
std::vector<Option> allOptions(const Program& program);
/// The options that only this verb, or this verb and a few others, take.
std::vector<Option> optionsOf(const Program& program, const Verb& verb);

/// All verbs of all groups.
std::vector<const Verb*> allVerbs(const Program& program);
/// The verb that the words begin with, or null. Of two that match, the one with more words.
const Verb* findVerb(const Program& program, const std::vector<std::string>& words);
/// The words of a verb's name.
std::vector<std::string> wordsOf(const Verb& verb);

/// "tune ONID:TSID:SID"
std::string synopsis(const Verb& verb);
/// "--name VALUE"
std::string synopsis(const Option& option);

}  // namespace command_line
