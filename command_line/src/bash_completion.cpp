// Writes completion scripts for bash.
#include <algorithm>
#include <map>

#include "command_line/generated.h"

namespace command_line {

namespace {

/// Splits the line itself, because readline also breaks words at colons and equals signs. `cur` is the word at the
/// cursor, `given` the words before it without options and their values. `key` says what is wanted: the name of an
/// option whose value comes, or "- WORDS " for an option's name, or "COUNT WORDS " for the next word.
constexpr const char* kSplit = R"(    local line=${COMP_LINE:0:COMP_POINT} cur='' option='' word key
    local -a words=() given=() offered=()
    COMPREPLY=()
    read -r -a words <<<"$line"
    if [[ $line != *[[:space:]] ]]; then
        cur=${words[-1]}
        unset 'words[-1]'
    fi
    for word in "${words[@]:1}"; do
        if [[ -n $option ]]; then
            option=''
        elif [[ $word != --* ]]; then
            given+=("$word")
        elif [[ ' @VALUED@ ' == *" $word "* ]]; then
            option=$word
        fi
    done
    if [[ -z $option && $cur == --*=* ]]; then
        option=${cur%%=*}
        cur=${cur#*=}
    fi
    if [[ -n $option ]]; then
        key=$option
    elif [[ $cur == -* ]]; then
        key="- ${given[*]} "
    else
        key="${#given[@]} ${given[*]} "
    fi
)";

/// Keeps what begins like the word at the cursor. Readline replaces only what follows a colon.
constexpr const char* kReply = R"(    for word in "${offered[@]}"; do
        [[ $word == "$cur"* ]] && COMPREPLY+=("$word")
    done
    if [[ $COMP_WORDBREAKS == *:* && $cur == *:* ]]; then
        COMPREPLY=("${COMPREPLY[@]#"${cur%"${cur##*:}"}"}")
    fi
)";

std::string quoted(const std::string& word) {
    std::string text = "'";
    for (const char character : word) {
        text += character == '\'' ? std::string("'\\''") : std::string(1, character);
    }
    return text + "'";
}

/// The command that fills `offered`.
std::string offer(const Completion& completion) {
    std::string words;
    switch (completion.kind) {
        case Completion::Kind::files:
            return R"(mapfile -t offered < <(compgen -f -- "$cur"); compopt -o filenames 2>/dev/null)";
        case Completion::Kind::words:
            for (const std::string& word : completion.words) {
                words += (words.empty() ? "" : " ") + quoted(word);
            }
            return "offered=(" + words + ")";
        case Completion::Kind::output:
            return "mapfile -t offered < <({ " + completion.command + "; } 2>/dev/null)";
        default:
            return ":";
    }
}

/// A branch for the keys that start with this text; an empty text is any.
std::string branch(const std::string& start, const Completion& completion) {
    return "    " + (start.empty() ? "" : quoted(start)) + "*) " + offer(completion) + " ;;\n";
}

std::string valueBranches(const std::vector<Option>& options) {
    std::string text;
    for (const Option& option : options) {
        if (!option.value.empty()) {
            text += "    --" + option.name + ") " + offer(option.completion) + " ;;\n";
        }
    }
    // The value of no known option.
    return text + "    --*) ;;\n";
}

Completion namesOf(const std::vector<Option>& options) {
    std::vector<std::string> names;
    names.reserve(options.size());
    for (const Option& option : options) {
        names.push_back("--" + option.name);
    }
    return oneOf(names);
}

std::string optionBranches(const Program& program) {
    std::vector<Option> general = allOptions(program);
    general.erase(
        std::remove_if(general.begin(), general.end(), [](const Option& option) { return !option.verbs.empty(); }),
        general.end());
    std::string text;
    for (const Verb* const verb : allVerbs(program)) {
        std::vector<Option> options = optionsOf(program, *verb);
        options.insert(options.end(), general.begin(), general.end());
        text += options.size() == general.size() ? "" : branch("- " + verb->name + " ", namesOf(options));
    }
    return text + branch("- ", namesOf(general));
}

std::string argumentBranches(const std::vector<Argument>& arguments, const std::vector<std::string>& verb) {
    std::string words;
    for (const std::string& word : verb) {
        words += word + " ";
    }
    std::string text;
    std::size_t given = verb.size();
    for (const Argument& argument : arguments) {
        const bool repeats = argument.name.find("...") != std::string::npos;
        text += repeats ? "    *" + quoted(" " + words) + "*) " + offer(argument.completion) + " ;;\n"
                        : branch(std::to_string(given) + " " + words, argument.completion);
        ++given;
    }
    return text;
}

/// The words of the verbs: the first of each, and what follows the first of those with several.
std::string verbBranches(const Program& program) {
    std::map<std::string, std::vector<std::string>> next;
    for (const Verb* const verb : allVerbs(program)) {
        std::size_t count = 0;
        std::string before;
        for (const std::string& word : wordsOf(*verb)) {
            const std::string start = std::to_string(count++) + " " + before;
            std::vector<std::string>& known = next[start];
            if (std::find(known.begin(), known.end(), word) == known.end()) {
                known.push_back(word);
            }
            before += word + " ";
        }
    }
    std::string text;
    for (const auto& [start, words] : next) {
        text += branch(start, oneOf(words));
    }
    return text;
}

std::string valuedNames(const std::vector<Option>& options) {
    std::string names;
    for (const Option& option : options) {
        if (!option.value.empty()) {
            names += (names.empty() ? "--" : " --") + option.name;
        }
    }
    return names;
}

}  // namespace

std::string bashCompletion(const Program& program) {
    const std::vector<Option> options = allOptions(program);
    std::string split = kSplit;
    const std::string mark = "@VALUED@";
    split.replace(split.find(mark), mark.size(), valuedNames(options));
    std::string branches = valueBranches(options) + optionBranches(program) + verbBranches(program) +
                           argumentBranches(program.arguments, {});
    for (const Verb* const verb : allVerbs(program)) {
        branches += argumentBranches(verb->arguments, wordsOf(*verb));
    }
    return "# Completion of " + program.name + " for bash.\n_" + program.name + "() {\n" + split +
           "    case $key in\n" + branches + "    esac\n" + kReply + "}\ncomplete -F _" + program.name + " " +
           program.name + "\n";
}

}  // namespace command_line
