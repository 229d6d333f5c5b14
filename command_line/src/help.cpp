// Lays out the help texts.
#include "command_line/help.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "command_line/arguments.h"
#include "text_layout.h"

namespace command_line {

namespace {

constexpr std::size_t kIndent = 2;

std::string section(const std::string& title, const std::string& text) {
    return text.empty() ? "" : "\n" + title + ":\n" + text;
}

std::string usageText(const Program& program, std::size_t width) {
    std::vector<Row> rows;
    for (const Row& usage : program.usage) {
        const std::string head = rows.empty() ? "usage: " : "       ";
        rows.push_back({head + program.name + (usage.term.empty() ? "" : " ") + usage.term, usage.help});
    }
    constexpr std::size_t kText = 24;
    return columns(rows, 0, width, width > kText ? width - kText : 0);
}

std::string optionRows(const std::vector<Option>& options, std::size_t width) {
    std::vector<std::string> terms;
    terms.reserve(options.size());
    for (const Option& option : options) {
        terms.push_back(synopsis(option));
    }
    return columns(terms, kIndent, width, [&options](std::size_t row, std::size_t textWidth) {
        const Option& option = options[row];
        return wrapped(option.help, textWidth) + columns(option.rows, kIndent, textWidth) +
               wrapped(option.after, textWidth);
    });
}

/// One section for the options of all verbs, then one for each set of verbs that share options.
std::string optionSections(const Program& program, std::size_t width) {
    std::string text;
    std::vector<Option> rest = allOptions(program);
    while (!rest.empty()) {
        const std::vector<std::string> verbs = text.empty() ? std::vector<std::string>() : rest.front().verbs;
        const auto others = std::stable_partition(rest.begin(), rest.end(),
                                                  [&verbs](const Option& option) { return option.verbs == verbs; });
        std::string names;
        for (const std::string& verb : verbs) {
            names += (names.empty() ? " of " : ", ") + verb;
        }
        text += section("Options" + names, optionRows({rest.begin(), others}, width));
        rest.erase(rest.begin(), others);
    }
    return text;
}

std::string verbRows(const VerbGroup& group, std::size_t width) {
    std::vector<Row> rows;
    for (const Verb& verb : group.verbs) {
        rows.push_back({synopsis(verb), verb.help});
    }
    return columns(rows, kIndent, width);
}

/// The lines of an example, indented.
std::string indented(const std::string& lines) {
    std::string text;
    for (std::size_t at = 0; at < lines.size();) {
        const std::size_t end = std::min(lines.find('\n', at), lines.size());
        text += std::string(kIndent, ' ') + lines.substr(at, end - at) + "\n";
        at = end + 1;
    }
    return text;
}

std::string exampleLines(const std::vector<Row>& examples) {
    std::string text;
    for (const Row& example : examples) {
        text += indented(example.term) + std::string(2 * kIndent, ' ') + indented(example.help);
    }
    return text;
}

}  // namespace

std::size_t helpWidth() {
    constexpr std::size_t kUnknown = 80;
    constexpr std::size_t kNarrowest = 40;
    constexpr std::size_t kWidest = 100;
    const char* const columns = std::getenv("COLUMNS");
    const std::uint64_t wanted = parseNumber(columns == nullptr ? "" : columns).value_or(0);
    auto width = static_cast<std::size_t>(std::min<std::uint64_t>(wanted, kWidest));
    winsize window{};
    if (width == 0 && ioctl(STDOUT_FILENO, TIOCGWINSZ, &window) == 0) {
        width = window.ws_col;
    }
    return std::clamp(width == 0 ? kUnknown : width, kNarrowest, kWidest);
}

std::string helpText(const Program& program, std::size_t width) {
    std::string text = usageText(program, width);
    if (!program.description.empty()) {
        text += "\n" + wrapped(program.description, width);
    }
    for (const VerbGroup& group : program.verbs) {
        text += section(group.title, verbRows(group, width));
    }
    text += optionSections(program, width);
    text += section("Exit codes", columns(program.exitStatuses, kIndent, width));
    text += section("Environment", columns(program.environment, kIndent, width));
    text += section("Files", columns(program.files, kIndent, width));
    text += section("Examples", exampleLines(program.examples));
    return text;
}

std::string helpText(const Program& program, const Verb& verb, std::size_t width) {
    std::string text = "usage: " + program.name + " " + synopsis(verb) + "\n\n" + wrapped(verb.help, width);
    if (!verb.text.empty()) {
        text += "\n" + wrapped(verb.text, width);
    }
    const std::vector<Option> options = optionsOf(program, verb);
    text += section("Options", options.empty() ? "" : optionRows(options, width));
    text += section("Example", indented(verb.example));
    return text;
}

std::string versionText(const Program& program) {
    return program.name + " " + DTV_VERSION + "\n";
}

}  // namespace command_line
