// The table of verbs, and the descriptions made of it.
#include "verbs.h"

#include "library.h"

namespace dvbshell {

namespace {

using command_line::Option;

constexpr std::chrono::milliseconds kLongestForService{500};

/// Options of single verbs, and --seconds.
std::vector<Option> verbOptions() {
    return {
        {"seconds",
         "N",
         "how long to wait for what arrives; the help of each command names the default",
         {},
         {},
         {},
         {}},
        {"id-type", "N", "OIPF channel idType of the tune; default: 12 (DVB-T)", {}, {"tune"}, {}, {}},
        {"table", "ID[/MASK]", "sections with this table_id; a mask selects several", {}, {"sections"}, {}, {}},
        {"match",
         "HEX",
         "bytes to match: byte 0 is table_id, byte 1 the section's byte 3 and so on",
         {},
         {"sections"},
         {},
         {}},
        {"mask", "HEX", "the bits of --match to compare, as many bytes", {}, {"sections"}, {}, {}},
        {"count", "N", "end after N sections", {}, {"sections"}, {}, {}},
        {"hex", "", "print each section on one line in hexadecimal", {}, {"sections"}, {}, {}},
        {"out",
         "FILE",
         "write to FILE: the bytes of all sections, without separators; the file of a carousel; a folder with all "
         "files "
         "of a carousel",
         command_line::anyFile(),
         {"sections", "carousel", "carousel get"},
         {},
         {}},
        {"stored", "", "only print what the library has stored, without tuning", {}, {"ait"}, {}, {}},
    };
}

std::vector<Option> programOptions() {
    return {
        {"library",
         "PATH",
         "the library; default: ../lib/libbrowserdvbapi.so beside this program",
         command_line::anyFile(),
         {},
         {},
         {}},
        {"json", "", "print one JSON object on each line", {}, {}, {}, {}},
        {"log",
         "LEVEL|FILE",
         "show the library's log, which is off unless this or the environment asks for it. May be given twice: a level "
         "(off, failure, warning, ordinary, trace), and a file, with a slash or a dot in its name, to append to "
         "instead of standard error. The library logs a "
         "failure \"Unknown Filter closed\" for each filter that is closed in order",
         command_line::oneOf(logLevels()),
         {},
         {},
         {}},
        {"color",
         "WHEN",
         "colours: always, never, or auto, on a terminal only; default: auto",
         command_line::oneOf({"always", "never", "auto"}),
         {},
         {},
         {}},
    };
}

Option serviceOption() {
    return {"service",
            "ONID:TSID:SID",
            "show this service; may be given several times. Network 65535 stands for any",
            channelArgument("").completion,
            {"demo"},
            {},
            {}};
}

command_line::Program describeCommandLine() {
    command_line::Program program;
    program.name = "dvbshell";
    program.summary = "a browser host for the command line";
    program.usage = {{"[OPTION...]", "a prompt; or commands from standard input, one on each line"},
                     {"[OPTION...] COMMAND [ARGUMENT...]", "run one command; COMMAND --help explains it"}};
    program.description =
        "Loads the browser library as a browser does, and uses its interfaces. The prompt has the same commands.";
    program.options = programOptions();
    const std::vector<Option> more = verbOptions();
    program.options.insert(program.options.end(), more.begin(), more.end());
    program.options.push_back(serviceOption());
    program.exitStatuses = {{"0", "the command did what it says"},
                            {"1", "it failed, for example because a channel or a section did not come"},
                            {"2", "the command line is wrong"},
                            {"3", "no DTV service answers, or it has gone"}};
    program.environment = {
        {"DTV_RUN_DIR", "the directory of the DTV service's sockets, of the host platform"},
        {"DTV_LOG_LEVEL", "the library's log: off, failure, warning, ordinary or trace; with DTV_LOG_FILE like --log"},
        {"DTV_BUS_FILE", "file for what the browser says to the service and hears from it, which dtvmon reads"},
        {"NO_COLOR", "no colours, if not empty"},
        {"COLUMNS", "the width of lines on a terminal"}};
    program.files = {{"~/.local/state/dvbshell/history", "the lines of the prompt; $XDG_STATE_HOME/dvbshell/history"}};
    program.examples = {{"dvbshell tune 1:1025:28106", "tune, then print what arrives"},
                        {"dvbshell channels", "the services of the presented multiplex"},
                        {"dvbshell --json watch", "events as JSON, one object on each line, until Ctrl-C"}};
    program.seeAlso = {"dtvserviced", "dtvctl", "tsmake"};
    return program;
}

command_line::Program describePrompt() {
    command_line::Program program;
    program.name = "dvb>";
    program.summary = "the prompt of dvbshell";
    program.usage = {{"COMMAND [ARGUMENT...]", "help COMMAND explains one; the tabulator key completes"}};
    program.description =
        "Single or double quotes keep blanks in an argument. Ctrl-C clears the line, and ends a command that runs.";
    program.options = verbOptions();
    program.isPrompt = true;
    return program;
}

std::vector<VerbGroup> allGroups(Place place) {
    std::vector<VerbGroup> groups = {channelVerbs(), tableVerbs(), streamEventVerbs(), carouselVerbs()};
    groups.push_back(place == Place::prompt ? promptVerbs() : commandLineVerbs());
    groups.push_back(operationVerbs());
    return groups;
}

command_line::Program withVerbs(command_line::Program program, Place place) {
    for (const VerbGroup& group : verbsOf(place)) {
        command_line::VerbGroup described{group.title, {}};
        for (const Verb& verb : group.verbs) {
            described.verbs.push_back(verb.description);
            described.verbs.back().example = program.name + " " + verb.description.example;
        }
        program.verbs.push_back(described);
    }
    return program;
}

const Verb* findRow(Place place, const std::string& name) {
    for (const VerbGroup& group : verbsOf(place)) {
        for (const Verb& verb : group.verbs) {
            if (verb.description.name == name) {
                return &verb;
            }
        }
    }
    return nullptr;
}

}  // namespace

const std::vector<std::string>& logLevels() {
    static const std::vector<std::string> levels = {"off", "failure", "warning", "ordinary", "trace"};
    return levels;
}

command_line::Argument channelArgument(const char* name) {
    return {name, command_line::outputOf("dvbshell channels --seconds 1 | cut -d' ' -f1")};
}

const std::vector<VerbGroup>& verbsOf(Place place) {
    static const std::vector<VerbGroup> ofCommandLine = allGroups(Place::commandLine);
    static const std::vector<VerbGroup> ofPrompt = allGroups(Place::prompt);
    return place == Place::prompt ? ofPrompt : ofCommandLine;
}

const command_line::Program& describe(Place place) {
    static const command_line::Program ofCommandLine = withVerbs(describeCommandLine(), Place::commandLine);
    static const command_line::Program ofPrompt = withVerbs(describePrompt(), Place::prompt);
    return place == Place::prompt ? ofPrompt : ofCommandLine;
}

Job prepare(Place place, const command_line::Arguments& arguments, std::string& error) {
    const std::string name = arguments.verb == nullptr ? "" : arguments.verb->name;
    const Verb* const verb = findRow(place, name);
    if (verb == nullptr || !verb->prepare) {
        error = "unknown command " + name;
        return nullptr;
    }
    ArgumentReader reader(arguments);
    const Job job = verb->prepare(reader);
    error = reader.error();
    if (!error.empty()) {
        // An operation's error begins with its name already.
        error = error.compare(0, name.size(), name) == 0 ? error : name + ": " + error;
        return nullptr;
    }
    return verb->needs == Verb::Needs::nothing ? job : guarded(job, verb->needs);
}

Job guarded(Job job, Verb::Needs needs) {
    return [job, needs](Session& session) -> int {
        if (!session.connection.await(kLongestForService)) {
            fail(session, noServiceText());
            return kNoService;
        }
        session.awaitChannel();
        if (needs == Verb::Needs::events) {
            session.announce();
        }
        return job(session);
    };
}

}  // namespace dvbshell
