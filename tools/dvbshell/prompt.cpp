// Reads operations from the terminal or from a script.
#include "prompt.h"

#include <editline/readline.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <thread>

#include "ait_link.h"
#include "operations.h"
#include "triplet.h"

namespace dvbshell {

namespace {

/// After each line of a script, print events until none arrives for this long.
constexpr std::chrono::milliseconds kQuiet{200};
/// How long the editor waits for an event before it checks for a key.
constexpr std::chrono::milliseconds kBetweenKeys{20};
constexpr const char* kPrompt = "dvb> ";
constexpr const char* kHelp = "help";
constexpr const char* kQuit = "quit";

void printHelp(Printer& printer) {
    for (const Operation& operation : operations()) {
        std::string line = synopsis(operation);
        line.resize(std::max<std::size_t>(line.size() + 2, 52), ' ');
        printer.note(line + operation.help);
    }
    printer.note(
        "ait [ONID:TSID:SID]                                 what is stored of a channel's AIT; of the current one");
    printer.note("help, quit");
}

/// The state for the line editor's hooks, which get no context pointer.
struct Session {
    Host& host;
    Printer& printer;
    EventQueue& queue;
};
Session* theSession = nullptr;

/// Returns false when the user quits.
bool runLine(Session& session, const std::string& line, bool& good) {
    std::vector<std::string> words;
    std::string error;
    good = splitWords(line, words, error);
    if (!good) {
        session.printer.note(error);
        return true;
    }
    if (words.empty()) {
        return true;
    }
    if (words[0] == kQuit) {
        return false;
    }
    if (words[0] == kHelp) {
        printHelp(session.printer);
    } else if (words[0] == kReplayAit) {
        good = replayAit(session.host, session.printer, words);
    } else {
        good = runOperation(session.host, session.printer, words);
    }
    return true;
}

std::vector<std::string> firstWords() {
    std::vector<std::string> words = {kReplayAit, kHelp, kQuit};
    for (const Operation& operation : operations()) {
        words.emplace_back(operation.name);
    }
    return words;
}

char* nextName(const char* begin, int state) {
    static const std::vector<std::string> words = firstWords();
    static std::size_t index;
    index = state == 0 ? 0 : index;
    while (index < words.size()) {
        const char* const name = words[index++].c_str();
        if (std::strncmp(name, begin, std::strlen(begin)) == 0) {
            return strdup(name);
        }
    }
    return nullptr;
}

/// Completes the first word, which is an operation's name, and no arguments.
char** completeName(const char* word, int start, int) {
    rl_attempted_completion_over = 1;
    return start == 0 ? rl_completion_matches(word, nextName) : nullptr;
}

/// The editor calls this repeatedly while it waits for a key. Prints events above the line being typed.
int showEvents() {
    std::optional<Event> event = theSession->queue.take(Clock::now() + kBetweenKeys);
    if (event) {
        std::printf("\r\033[K");
        for (; event; event = theSession->queue.take(Clock::now())) {
            theSession->printer.print(*event, theSession->host.api.getCurrentCCID());
        }
        rl_forced_update_display();
    }
    return 0;
}

void converse(Session& session) {
    theSession = &session;
    rl_readline_name = "dvbshell";
    rl_attempted_completion_function = completeName;
    rl_event_hook = showEvents;
    using_history();
    while (char* const line = readline(kPrompt)) {
        const std::string text = line;
        std::free(line);
        if (!text.empty()) {
            add_history(text.c_str());
        }
        bool good = true;
        if (!runLine(session, text, good)) {
            return;
        }
    }
}

int runScript(Session& session) {
    int result = 0;
    for (std::string line; std::getline(std::cin, line);) {
        bool good = true;
        if (!runLine(session, line, good)) {
            break;
        }
        result = good ? result : 1;
        while (const std::optional<Event> event = session.queue.take(Clock::now() + kQuiet)) {
            session.printer.print(*event, session.host.api.getCurrentCCID());
        }
    }
    return result;
}

}  // namespace

bool replayAit(Host& host, Printer& printer, const std::vector<std::string>& words) {
    Triplet channel;
    if (words.size() > 2 || (words.size() == 2 && !parseTriplet(words[1], channel))) {
        printer.note("ait takes a channel as ONID:TSID:SID, or nothing for the current one");
        return false;
    }
    if (words.size() == 1 && host.api.getCurrentChannelInfo(channel.onid, channel.tsid, channel.sid) != 0) {
        printer.note("ait: the current channel is not known");
        return false;
    }
    return host.ait != nullptr &&
           host.ait->replay(static_cast<std::uint16_t>(channel.onid), static_cast<std::uint16_t>(channel.tsid),
                            static_cast<std::uint16_t>(channel.sid));
}

bool runOperation(Host& host, Printer& printer, const std::vector<std::string>& words) {
    const Operation* const operation = findOperation(words[0]);
    if (operation == nullptr) {
        printer.note("unknown operation " + words[0] + "; help lists them");
        return false;
    }
    Values values;
    std::string error;
    if (!parseValues(*operation, {words.begin() + 1, words.end()}, values, error)) {
        printer.note(error);
        return false;
    }
    const Outcome outcome = operation->call(host, values);
    printer.result(*operation, outcome);
    return outcome.result.value_or(0) >= 0;
}

void awaitChannel(Host& host) {
    constexpr std::chrono::milliseconds kLongest{500};
    constexpr std::chrono::milliseconds kBetweenLooks{5};
    const Clock::time_point end = Clock::now() + kLongest;
    int onid = 0;
    int tsid = 0;
    int sid = 0;
    while (host.api.getCurrentChannelInfo(onid, tsid, sid) != 0 && Clock::now() < end) {
        std::this_thread::sleep_for(kBetweenLooks);
    }
}

int runPrompt(Host& host, EventQueue& queue, Printer& printer) {
    Session session{host, printer, queue};
    awaitChannel(host);
    if (isatty(STDIN_FILENO) == 0) {
        return runScript(session);
    }
    converse(session);
    return 0;
}

}  // namespace dvbshell
