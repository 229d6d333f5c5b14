// Reads commands from the terminal or from a script.
#include "prompt.h"

#include <unistd.h>

#include <memory>
#include <sstream>
#include <utility>

#include "channels.h"
#include "command_line/help.h"
#include "completion.h"
#include "interrupt.h"
#include "line_editor.h"
#include "script_lines.h"
#include "verbs.h"
#include "words.h"

namespace dvbshell {

namespace {

constexpr const char* kHelp = "help";
constexpr const char* kQuit = "quit";

void noteLines(Session& session, const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        session.printer.note(line);
    }
}

/// "help" and "help VERB".
int showHelp(Session& session, const std::string& name) {
    const command_line::Program& program = describe(Place::prompt);
    const command_line::Verb* const verb = name.empty() ? nullptr : command_line::findVerb(program, {name});
    if (!name.empty() && verb == nullptr) {
        session.printer.note("unknown command " + name + "; help lists all");
        return kUsageError;
    }
    const std::size_t width = command_line::helpWidth();
    noteLines(session, verb == nullptr ? helpText(program, width) : helpText(program, *verb, width));
    return kDone;
}

int misuse(Session& session, const std::string& error, const command_line::Verb* verb) {
    session.printer.note(error);
    session.printer.note(std::string("try: help") + (verb == nullptr ? "" : " " + verb->name));
    return kUsageError;
}

int runWords(Session& session, const std::vector<std::string>& words) {
    const command_line::Program& program = describe(Place::prompt);
    std::string error;
    const std::optional<command_line::Arguments> arguments = command_line::parse(program, words, error);
    if (!arguments || arguments->verb == nullptr) {
        return misuse(session, error.empty() ? "a command is missing" : error,
                      command_line::findVerb(program, {words[0]}));
    }
    if (arguments->has("help")) {
        return showHelp(session, arguments->verb->name);
    }
    if (arguments->verb->name == kHelp) {
        return showHelp(session, arguments->operands.empty() ? "" : arguments->operands[0]);
    }
    const Job job = prepare(Place::prompt, *arguments, error);
    return job ? job(session) : misuse(session, error, arguments->verb);
}

/// Reads the tables of the presented multiplex beside the prompt, for names and completion.
class ChannelReading {
public:
    explicit ChannelReading(Session& newSession) : session(newSession) {}

    /// Begins to read the presented multiplex.
    void scan() {
        reading = std::make_unique<ChannelScan>(session);
        givenUp = Clock::now() + kLongest;
    }
    /// Waits a moment for the name of a channel. If it comes later, takeNews() gives it.
    std::string awaitName(const Triplet& channel) {
        reading->wait(Clock::now() + kForName);
        std::string name = reading->list().nameOf(channel);
        if (name.empty()) {
            nameless = channel;
        }
        return name;
    }
    /// Takes what has come.
    void take() {
        if (!reading) {
            return;
        }
        reading->take();
        for (const Channel& channel : reading->list().channels()) {
            session.knownChannels.insert(tripletText(channel.triplet));
        }
        const std::string name = nameless ? reading->list().nameOf(*nameless) : "";
        if (!name.empty()) {
            news = tripletText(*nameless) + " is " + name;
            nameless.reset();
        }
        if (reading->list().isComplete() || Clock::now() > givenUp) {
            reading.reset();
        }
    }
    /// A line that names the channel that had no name, once.
    std::optional<std::string> takeNews() { return std::exchange(news, std::nullopt); }

private:
    static constexpr std::chrono::seconds kLongest{10};
    static constexpr std::chrono::milliseconds kForName{700};

    Session& session;
    std::unique_ptr<ChannelScan> reading;
    Clock::time_point givenUp{};
    std::optional<Triplet> nameless;
    std::optional<std::string> news;
};

void greet(Session& session, ChannelReading& channels) {
    if (!session.connection.await(std::chrono::milliseconds(500))) {
        session.printer.note(noServiceText());
        return;
    }
    session.awaitChannel();
    session.announce();
    const std::optional<Triplet> channel = session.presented();
    if (!channel) {
        session.printer.note("no channel is presented yet");
        return;
    }
    channels.scan();
    const std::string name = channels.awaitName(*channel);
    session.printer.note("presented: " + session.host.api.getCurrentCCID() + (name.empty() ? "" : "  " + name));
}

/// Prints events and news above the line that is being typed.
void showNews(Session& session, ChannelReading& channels, LineEditor& editor) {
    channels.take();
    const std::optional<std::string> name = channels.takeNews();
    std::optional<Event> event = session.events.take(Clock::now());
    // An event tells that the service is back, before the next look does.
    const std::optional<std::string> news = session.connection.news(event && session.connection.isGone());
    if (!news && !event && !name) {
        return;
    }
    editor.hideLine();
    for (const std::optional<std::string>& line : {news, name}) {
        if (line) {
            session.printer.note(*line);
        }
    }
    for (; event; event = session.events.take(Clock::now())) {
        session.print(*event);
    }
    editor.showLine();
}

int converse(Session& session) {
    session.atPrompt = true;
    ChannelReading channels(session);
    greet(session, channels);
    LineEditor editor("dvb> ", historyPath());
    editor.whileWaiting = [&] { showNews(session, channels, editor); };
    editor.complete = [&](const std::string& line) {
        channels.take();
        return completionsOf(line, session.knownChannels);
    };
    for (std::string line; editor.read(line);) {
        session.printWaiting();
        int result = kDone;
        if (!runLine(session, line, result) || session.outputFailed()) {
            break;
        }
        if (isInterrupted()) {
            clearInterrupt();
            session.printer.note("");  // ends the line on which the terminal shows ^C
        }
    }
    return kDone;
}

int runScript(Session& session) {
    /// After each line, print events until none arrives for this long.
    constexpr std::chrono::milliseconds kQuiet{200};
    constexpr std::chrono::seconds kLongest{1};
    int lastFailure = kDone;
    session.atPrompt = true;
    session.awaitChannel();
    ScriptLines lines;
    for (std::string line; lines.next(line);) {
        int result = kDone;
        if (!runLine(session, line, result)) {
            break;
        }
        lastFailure = result == kDone ? lastFailure : result;
        session.printUntilQuiet(kQuiet, Clock::now() + kLongest);
    }
    return lastFailure;
}

Job quitIsHere(ArgumentReader&) {
    return [](Session&) { return static_cast<int>(kDone); };
}

}  // namespace

bool runLine(Session& session, const std::string& line, int& result) {
    std::vector<std::string> words;
    std::string error;
    if (!splitWords(line, words, error)) {
        session.printer.note(error);
        result = kUsageError;
        return true;
    }
    if (words.empty()) {
        return true;
    }
    if (words == std::vector<std::string>{kQuit}) {
        return false;
    }
    result = runWords(session, words);
    return true;
}

int runPrompt(Session& session) {
    return isatty(STDIN_FILENO) == 0 ? runScript(session) : converse(session);
}

VerbGroup promptVerbs() {
    return {"The prompt",
            {{{kHelp, {{"[COMMAND]"}}, "list the commands, or explain one", "", "help tune"},
              quitIsHere,
              Verb::Needs::nothing},
             {{kQuit, {}, "end; so does Ctrl-D", "", "quit"}, quitIsHere, Verb::Needs::nothing}}};
}

}  // namespace dvbshell
