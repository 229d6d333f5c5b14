// The keys of scenarios: their names, kinds, ranges and meanings. What reads a scenario and the JSON schema both follow
// these tables.
// Threads: any; all data is constant.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace dtvservice {

struct Key {
    enum class Kind {
        whole,    ///< a number without a fraction
        number,   ///< a number
        flag,     ///< true or false
        text,     ///< a text of at most `most` bytes
        command,  ///< the name of a command in the catalogue
        event,    ///< the name of an event in the catalogue
        fault     ///< the name of a fault
    };
    const char* name;
    Kind kind;
    bool isRequired;
    std::int64_t least;
    std::uint64_t most;
    const char* meaning;
};

/// What a step does: a request of the operator's, under the request's name, or a fault.
struct Action {
    enum class Kind {
        request,  ///< the operator's
        fault,    ///< lasts until it is over or undone
        blow,     ///< a fault of one moment
        undo
    };
    const char* name;
    Kind kind;
    const char* meaning;
    std::vector<Key> keys;
};

/// A name of the message catalogue.
struct CatalogueName {
    const char* name;
    std::uint32_t identifier;
};

/// The keys of a scenario beside "steps".
const std::vector<Key>& scenarioKeys();
/// The keys of a step beside its action.
const std::vector<Key>& stepKeys();
const std::vector<Action>& actions();
const Action* findAction(const std::string& name);

const std::vector<CatalogueName>& commandNames();
const std::vector<CatalogueName>& eventNames();
/// The identifier of the name; 0 for an unknown one.
std::uint32_t identifierOf(const std::vector<CatalogueName>& names, const std::string& name);

/// The most steps of a scenario.
constexpr std::size_t kMostSteps = 1000;

/// The JSON schema of scenarios.
std::string scenarioSchema();

}  // namespace dtvservice
