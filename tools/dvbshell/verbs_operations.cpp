// The verbs that are operations of the DVB API.
#include <algorithm>

#include "tuning.h"
#include "verbs.h"

namespace dvbshell {

namespace {

constexpr std::chrono::seconds kAfterOperation{1};
constexpr const char* kTimeline = "TEMI timeline";

struct Example {
    const char* operation;
    const char* line;
};
constexpr Example kExamples[] = {{"tune-numbers", "tune-numbers 12 1 1025 28106 0"},
                                 {"tune-dsd", "tune-dsd 5a0b02faf08019112d8fffffff 28106 0"},
                                 {"tune-component", "tune-component audio 257 0"},
                                 {"select", "select subtitle"},
                                 {"unselect", "unselect subtitle"},
                                 {"audio-source", "audio-source \"TV\""},
                                 {"pts", "pts 0"},
                                 {"temi-start", "temi-start 1 0 0"},
                                 {"osd-start", "osd-start 3"},
                                 {"osd-stop", "osd-stop 3"},
                                 {"drm-message", "drm-message 1 0x0100 0 \"a type\" 'a text'"},
                                 {"ca-connect", "ca-connect 1"},
                                 {"ca-disconnect", "ca-disconnect 0"},
                                 {"opapp-status", "opapp-status 0 0"}};

std::string exampleOf(const Operation& operation) {
    for (const Example& example : kExamples) {
        if (std::string(example.operation) == operation.name) {
            return example.line;
        }
    }
    return operation.name;
}

bool isOneOf(const Operation& operation, std::initializer_list<const char*> names) {
    return std::any_of(names.begin(), names.end(),
                       [&operation](const std::string& name) { return name == operation.name; });
}

/// Operations that the library answers without the DTV service.
bool isLocal(const Operation& operation) {
    return isOneOf(operation, {"listen", "unlisten"});
}

/// Remembers what stays open in the DTV service after the operation.
void remember(Connection& connection, const Operation& operation, const Values& values) {
    const std::string name = operation.name;
    if (name == "osd-start") {
        connection.followLayer(values[0].as<std::uint32_t>());
    } else if (name == "osd-stop") {
        connection.leaveLayer(values[0].as<std::uint32_t>());
    } else if (name == "temi-start") {
        connection.open(kTimeline + (" " + std::to_string(values[0].number)) + ":" + std::to_string(values[1].number));
    } else if (name == "temi-stop") {
        connection.closeAll(kTimeline);
    }
}

/// The answer to a tune comes as an event.
std::optional<TuneGoal> goalOfOperation(const Operation& operation, const Values& values) {
    if (isOneOf(operation, {"tune-numbers"})) {
        const std::string what = std::to_string(values[1].as<int>()) + ":" + std::to_string(values[2].as<int>()) + ":" +
                                 std::to_string(values[3].as<int>());
        const std::optional<Triplet> channel = tripletOf(values[1].as<int>(), values[2].as<int>(), values[3].as<int>());
        return TuneGoal{what, [channel](const Event& event) { return channel && isOfChannel(event, *channel); }};
    }
    if (isOneOf(operation, {"tune-dsd"})) {
        const int sid = values[1].as<int>();
        return TuneGoal{"service " + std::to_string(sid) + " of the delivery system",
                        [sid](const Event& event) { return event.sid == sid; }};
    }
    return std::nullopt;
}

int callOperation(Session& session, const Operation& operation, const Values& values) {
    Outcome outcome = operation.call(session.host, values);
    bool good = outcome.result.value_or(0) >= 0;
    if (!outcome.result && !outcome.text && outcome.values.empty() && !isLocal(operation)) {
        good = session.connection.isThere();
        outcome.text = good ? "sent" : "not sent";
    }
    session.printer.result(operation, outcome);
    if (!good) {
        return session.connection.await(std::chrono::milliseconds(0)) ? kFailed : kNoService;
    }
    remember(session.connection, operation, values);
    return kDone;
}

int runOperation(Session& session, const Operation& operation, const Values& values,
                 const std::optional<std::chrono::seconds>& longest) {
    const int result = callOperation(session, operation, values);
    const std::optional<TuneGoal> goal = goalOfOperation(operation, values);
    // Who waits no second does not want the answer.
    if (result == kDone && goal && longest != std::chrono::seconds(0)) {
        return followTune(session, *goal, Clock::now() + longest.value_or(kLongestTune));
    }
    const Clock::time_point end = Clock::now() + longest.value_or(kAfterOperation);
    while (!session.atPrompt || longest) {
        const std::optional<Event> event = session.next(session.events, end);
        if (!event) {
            break;
        }
        session.print(*event);
    }
    return result;
}

command_line::Completion completionOf(const Parameter& parameter) {
    std::vector<std::string> names;
    for (const message_fields::NamedValue& named : parameter.names) {
        names.emplace_back(named.name);
    }
    return names.empty() ? command_line::Completion() : command_line::oneOf(names);
}

Verb verbOf(const Operation& operation) {
    Verb verb;
    verb.description.name = operation.name;
    for (const Parameter& parameter : operation.parameters) {
        verb.description.arguments.push_back({parameter.name, completionOf(parameter)});
    }
    verb.description.help = operation.help;
    verb.description.text = std::string("This is the interface's ") + operation.slot +
                            "(). On the command line, what arrives in --seconds (1) is printed after it.";
    verb.description.example = exampleOf(operation);
    verb.needs = Verb::Needs::events;
    verb.prepare = [&operation](ArgumentReader& reader) -> Job {
        Values values;
        std::string error;
        if (!parseValues(operation, reader.arguments().operands, values, error)) {
            reader.refuse(error);
        }
        const std::optional<std::chrono::seconds> longest = reader.seconds();
        return [&operation, values, longest](Session& session) {
            return runOperation(session, operation, values, longest);
        };
    };
    return verb;
}

}  // namespace

VerbGroup operationVerbs() {
    VerbGroup group{"Operations of the DVB API", {}};
    for (const Operation& operation : operations()) {
        group.verbs.push_back(verbOf(operation));
    }
    return group;
}

}  // namespace dvbshell
