// Writes manual pages in roff, with the macros of man(7).
#include <sstream>

#include "command_line/generated.h"
#include "text_layout.h"

namespace command_line {

namespace {

/// Text that roff prints unchanged: no escapes, hyphens that can be copied, no request at a line's begin.
std::string plain(const std::string& text) {
    std::string result;
    for (const char character : text) {
        const bool startsLine = result.empty() || result.back() == '\n';
        if (startsLine && (character == '.' || character == '\'')) {
            result += "\\&";
        }
        switch (character) {
            case '\\':
                result += "\\e";
                break;
            case '-':
                result += "\\-";
                break;
            case '\'':
                result += "\\(aq";
                break;
            case '^':
                result += "\\(ha";
                break;
            case '~':
                result += "\\(ti";
                break;
            case '`':
                result += "\\(ga";
                break;
            default:
                result += character;
        }
    }
    return result;
}

std::string heading(const std::string& title) {
    return ".SH \"" + title + "\"\n";
}

/// Paragraphs; roff fills the lines itself.
std::string filled(const std::string& text, const std::string& separator = ".PP\n") {
    std::string result;
    for (const std::string& paragraph : paragraphsOf(text)) {
        result += (result.empty() ? "" : separator) + plain(paragraph) + "\n";
    }
    return result;
}

std::string bold(const std::string& text) {
    return "\\fB" + plain(text) + "\\fR";
}

std::string tagged(const std::string& term, const std::string& text) {
    return ".TP\n" + bold(term) + "\n" + filled(text, ".IP\n");
}

std::string taggedRows(const std::vector<Row>& rows) {
    std::string text;
    for (const Row& row : rows) {
        text += tagged(row.term, row.help);
    }
    return text;
}

std::string section(const std::string& title, const std::string& text) {
    return text.empty() ? "" : heading(title) + text;
}

std::string synopsisLines(const Program& program) {
    std::string text;
    for (const Row& usage : program.usage) {
        text += (text.empty() ? "" : ".br\n") + bold(program.name) + (usage.term.empty() ? "" : " ") +
                plain(usage.term) + "\n";
    }
    return text;
}

/// The description, then what each form of the call does.
std::string description(const Program& program) {
    std::string text = filled(program.description);
    for (const Row& usage : program.usage) {
        if (!usage.help.empty()) {
            text += tagged(program.name + (usage.term.empty() ? "" : " ") + usage.term, usage.help);
        }
    }
    return text;
}

std::string verbs(const VerbGroup& group) {
    std::string text;
    for (const Verb& verb : group.verbs) {
        text += tagged(synopsis(verb), verb.help);
        if (!verb.text.empty()) {
            text += ".IP\n" + filled(verb.text, ".IP\n");
        }
        if (!verb.example.empty()) {
            text += ".IP\n.EX\n" + plain(verb.example) + "\n.EE\n";
        }
    }
    return text;
}

std::string options(const Program& program) {
    std::string text;
    for (const Option& option : allOptions(program)) {
        std::string takers;
        for (const std::string& verb : option.verbs) {
            takers += (takers.empty() ? "Only with " : ", ") + verb;
        }
        text += tagged(synopsis(option), (takers.empty() ? "" : takers + ": ") + option.help);
        if (!option.rows.empty()) {
            text += ".RS\n" + taggedRows(option.rows) + ".RE\n";
        }
        if (!option.after.empty()) {
            text += ".IP\n" + filled(option.after, ".IP\n");
        }
    }
    return text;
}

std::string examples(const Program& program) {
    std::string text;
    for (const Row& example : program.examples) {
        text += ".PP\n" + filled(example.help) + ".RS 4\n.EX\n" + plain(example.term) + "\n.EE\n.RE\n";
    }
    return text;
}

std::string seeAlso(const Program& program) {
    std::string text;
    for (const std::string& name : program.seeAlso) {
        text += (text.empty() ? "" : ",\n") + (".BR " + name + " (1)");
    }
    return text.empty() ? "" : text + "\n";
}

}  // namespace

std::string manPage(const Program& program) {
    std::string title;
    for (const char character : program.name) {
        title += static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
    }
    std::string page = ".TH " + title + " 1 \"\" \"browserdvbapi " DTV_VERSION "\" \"User Commands\"\n" + ".ad l\n" +
                       section("NAME", plain(program.name) + " \\- " + plain(program.summary) + "\n") +
                       section("SYNOPSIS", synopsisLines(program)) + section("DESCRIPTION", description(program));
    for (const VerbGroup& group : program.verbs) {
        std::string upper;
        for (const char character : group.title) {
            upper += static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
        }
        page += section(upper, verbs(group));
    }
    return page + section("OPTIONS", options(program)) + section("EXIT STATUS", taggedRows(program.exitStatuses)) +
           section("ENVIRONMENT", taggedRows(program.environment)) + section("FILES", taggedRows(program.files)) +
           section("EXAMPLES", examples(program)) + section("SEE ALSO", seeAlso(program));
}

}  // namespace command_line
