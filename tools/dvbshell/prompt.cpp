// Reads commands from the terminal or from a script.
#include "prompt.h"

#include <unistd.h>

#include <iostream>
#include <memory>
#include <sstream>

#include "channels.h"
#include "command_line/help.h"
#include "completion.h"
#include "interrupt.h"
#include "line_editor.h"
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

/// What the prompt knows of channels: from the tables of the presented multiplex, and from events.
class KnownChannels {
public:
    explicit KnownChannels(Session& newSession) : session(newSession) {}

    /// Begins to read the presented multiplex.
    void scan() {
        reading = std::make_unique<ChannelScan>(session);
        givenUp = Clock::now() + kLongest;
    }
    /// Waits a moment for the name of a channel.
    std::string awaitName(const Triplet& channel) {
        if (reading) {
            reading->wait(Clock::now() + kForName);
        }
        return reading ? reading->list().nameOf(channel) : "";
    }
    void take() {
        if (!reading) {
            return;
        }
        reading->take();
        for (const Channel& channel : reading->list().channels()) {
            triplets.insert(tripletText(channel.triplet));
        }
        if (reading->list().isComplete() || Clock::now() > givenUp) {
            reading.reset();
        }
    }
    void note(const Event& event) {
        if (event.kind == EventKind::channel && event.onid >= 0) {
            triplets.insert(tripletText({event.onid, event.tsid, event.sid}));
        }
    }
    const std::set<std::string>& all() const { return triplets; }

private:
    static constexpr std::chrono::seconds kLongest{10};
    static constexpr std::chrono::milliseconds kForName{700};

    Session& session;
    std::unique_ptr<ChannelScan> reading;
    Clock::time_point givenUp{};
    std::set<std::string> triplets;
};

void greet(Session& session, KnownChannels& channels) {
    if (!session.connection.await(std::chrono::milliseconds(500))) {
        session.printer.note(noServiceText());
        return;
    }
    session.awaitChannel();
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
void showNews(Session& session, KnownChannels& channels, LineEditor& editor) {
    channels.take();
    std::optional<Event> event = session.events.take(Clock::now());
    // An event tells that the service is back, before the next look does.
    const std::optional<std::string> news = session.connection.news(event && session.connection.isGone());
    if (!news && !event) {
        return;
    }
    editor.hideLine();
    if (news) {
        session.printer.note(*news);
    }
    for (; event; event = session.events.take(Clock::now())) {
        session.print(*event);
        channels.note(*event);
    }
    editor.showLine();
}

int converse(Session& session) {
    session.atPrompt = true;
    KnownChannels channels(session);
    greet(session, channels);
    LineEditor editor("dvb> ", historyPath());
    editor.whileWaiting = [&] { showNews(session, channels, editor); };
    editor.complete = [&](const std::string& line) { return completionsOf(line, channels.all()); };
    for (std::string line; editor.read(line);) {
        clearInterrupt();
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
    int worst = kDone;
    session.atPrompt = true;
    session.awaitChannel();
    for (std::string line; !isInterrupted() && std::getline(std::cin, line);) {
        int result = kDone;
        if (!runLine(session, line, result)) {
            break;
        }
        worst = result == kDone ? worst : result;
        while (const std::optional<Event> event = session.next(session.events, Clock::now() + kQuiet)) {
            session.print(*event);
        }
    }
    return worst;
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
