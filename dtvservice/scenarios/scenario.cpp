// Reads scenarios.
#include "scenario.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "nearest_names.h"
#include "scenario_file.h"

namespace dtvservice {

namespace {

using nlohmann::json;

/// The errors of a text, by their places.
class Errors {
public:
    void add(const std::string& place, const std::string& what) {
        constexpr std::size_t kMostTold = 10;
        if (++count <= kMostTold) {
            text += (text.empty() ? "" : "; ") + (place.empty() ? "" : place + ": ") + what;
        }
    }
    bool empty() const { return count == 0; }
    std::string all() const { return text; }

private:
    std::size_t count = 0;
    std::string text;
};

std::string under(const std::string& place, const std::string& key) {
    return place.empty() ? key : place + "." + key;
}

std::string shown(const json& value) {
    constexpr std::size_t kLongest = 60;
    if (value.is_structured()) {
        return value.is_object() ? "an object" : "a list";
    }
    const std::string text = value.dump(-1, ' ', true, json::error_handler_t::replace);
    return text.size() > kLongest ? text.substr(0, kLongest) + "..." : text;
}

/// A number that has no fraction is a whole one, however it is written.
json normalised(const json& value) {
    constexpr double kExact = 9007199254740992.0;  // up to here a double has all whole numbers
    if (value.is_number_float()) {
        const auto number = value.get<double>();
        if (std::trunc(number) == number && std::fabs(number) <= kExact) {
            return static_cast<std::int64_t>(number);
        }
    }
    return value;
}

bool isInRange(const Key& key, const json& value) {
    if (value.is_number_unsigned()) {
        return value.get<std::uint64_t>() <= key.most &&
               (key.least <= 0 || value.get<std::uint64_t>() >= static_cast<std::uint64_t>(key.least));
    }
    if (value.is_number_integer()) {
        const auto number = value.get<std::int64_t>();
        return number >= key.least && (number < 0 || static_cast<std::uint64_t>(number) <= key.most);
    }
    const auto number = value.get<double>();
    return number >= static_cast<double>(key.least) && number <= static_cast<double>(key.most);
}

std::string rangeOf(const Key& key) {
    return "from " + std::to_string(key.least) + " to " + std::to_string(key.most);
}

std::vector<std::string> namesFor(Key::Kind kind) {
    std::vector<std::string> names;
    if (kind == Key::Kind::fault) {
        for (const Action& action : actions()) {
            if (action.kind == Action::Kind::fault) {
                names.emplace_back(action.name);
            }
        }
        return names;
    }
    const std::vector<CatalogueName>& catalogue = kind == Key::Kind::command ? commandNames() : eventNames();
    names.reserve(catalogue.size());
    for (const CatalogueName& name : catalogue) {
        names.emplace_back(name.name);
    }
    return names;
}

/// What is wrong with a name; empty if it is one of the kind.
std::string wrongName(Key::Kind kind, const json& value) {
    const char* const what = kind == Key::Kind::command ? "command"
                             : kind == Key::Kind::event ? "event"
                                                        : "lasting fault";
    if (!value.is_string()) {
        return shown(value) + " is not the name of a " + what;
    }
    const std::vector<std::string> names = namesFor(kind);
    const auto name = value.get<std::string>();
    if (std::find(names.begin(), names.end(), name) != names.end()) {
        return "";
    }
    return "there is no " + std::string(what) + " " + shown(value) + "; the nearest: " + nearestNames(name, names);
}

/// What is wrong with a value; empty if it is right.
std::string wrongValue(const Key& key, const json& value) {
    switch (key.kind) {
        case Key::Kind::whole:
            return value.is_number_integer() && isInRange(key, value)
                       ? ""
                       : shown(value) + " is not a " + (value.is_number_float() ? "whole " : "") + "number " +
                             rangeOf(key);
        case Key::Kind::number:
            return value.is_number() && isInRange(key, value) ? "" : shown(value) + " is not a number " + rangeOf(key);
        case Key::Kind::flag:
            return value.is_boolean() ? "" : shown(value) + " is neither true nor false";
        case Key::Kind::text:
            return value.is_string() && value.get_ref<const std::string&>().size() <= key.most
                       ? ""
                       : shown(value) + " is not a text of at most " + std::to_string(key.most) + " bytes";
        default:
            return wrongName(key.kind, value);
    }
}

std::vector<std::string> namesOf(const std::vector<Key>& keys) {
    std::vector<std::string> names;
    names.reserve(keys.size());
    for (const Key& key : keys) {
        names.emplace_back(key.name);
    }
    return names;
}

/// Checks an object's members against its keys. `others`: members that are no keys of the table, but allowed.
void check(const std::string& place, json& object, const std::vector<Key>& keys, const std::set<std::string>& others,
           Errors& errors) {
    for (auto& [name, value] : object.items()) {
        const auto key =
            std::find_if(keys.begin(), keys.end(), [&known = name](const Key& each) { return known == each.name; });
        if (key != keys.end()) {
            value = normalised(value);
            if (const std::string wrong = wrongValue(*key, value); !wrong.empty()) {
                errors.add(under(place, name), wrong);
            }
        } else if (others.count(name) == 0) {
            std::vector<std::string> known = namesOf(keys);
            known.insert(known.end(), others.begin(), others.end());
            errors.add(place, "there is no key " + shown(name) + (known.empty() ? "" : "; the nearest: ") +
                                  nearestNames(name, known));
        }
    }
    for (const Key& key : keys) {
        if (key.isRequired && !object.contains(key.name)) {
            errors.add(under(place, key.name), "is missing");
        }
    }
}

const std::set<std::string>& actionNames() {
    static const std::set<std::string> kNames = [] {
        std::set<std::string> names;
        for (const Action& action : actions()) {
            names.insert(action.name);
        }
        return names;
    }();
    return kNames;
}

/// The step's action; null with an error if there is not exactly one.
const Action* actionOf(const std::string& place, const json& object, Errors& errors) {
    const Action* found = nullptr;
    std::string names;
    std::size_t count = 0;
    for (const auto& member : object.items()) {
        if (const Action* const action = findAction(member.key())) {
            found = action;
            names += (count == 0 ? "" : ", ") + member.key();
            ++count;
        }
    }
    if (count == 0) {
        errors.add(place, "has no action");
    } else if (count > 1) {
        errors.add(place, "has " + std::to_string(count) + " actions, but must have one: " + names);
    }
    return count == 1 ? found : nullptr;
}

/// The rules between the keys of a step.
void checkTrigger(const std::string& place, const json& object, const json& length, Errors& errors) {
    if (object.contains("at") == object.contains("upon")) {
        errors.add(place, "needs one of at and upon");
    }
    for (const char* const key : {"after", "nth", "every", "browser"}) {
        if (object.contains(key) && !object.contains("upon")) {
            errors.add(under(place, key), "is only for a step upon a command");
        }
    }
    if (object.contains("nth") && object.contains("every")) {
        errors.add(place, "needs one of nth and every, not both");
    }
    if (object.value("every", false) && length.is_null()) {
        errors.add(under(place, "every"), "would never end: the scenario needs seconds");
    }
    if (object.contains("at") && length.is_number() && object["at"] > length) {
        errors.add(under(place, "at"), shown(object["at"]) + " is behind the end of the scenario, " + shown(length));
    }
}

Step stepOf(const json& object, const Action& action) {
    Step step;
    step.action = &action;
    step.values = object.at(action.name);
    step.at = Step::Duration(object.value("at", 0.0));
    step.upon = identifierOf(commandNames(), object.value("upon", std::string()));
    step.browser = object.value("browser", std::uint32_t{0});
    step.nth = object.value("nth", std::uint64_t{1});
    step.every = object.value("every", false);
    if (object.contains("after")) {
        step.after = Step::Duration(object["after"].get<double>());
    }
    return step;
}

void readStep(const std::string& place, json object, const json& length, Scenario& scenario, Errors& errors) {
    if (!object.is_object()) {
        errors.add(place, shown(object) + " is not a step, which is an object");
        return;
    }
    Errors own;
    check(place, object, stepKeys(), actionNames(), own);
    const Action* const action = actionOf(place, object, own);
    if (action != nullptr && !object[action->name].is_object()) {
        own.add(under(place, action->name), shown(object[action->name]) + " is not an object");
    } else if (action != nullptr) {
        check(under(place, action->name), object[action->name], action->keys, {}, own);
    }
    if (own.empty()) {
        checkTrigger(place, object, length, own);
    }
    if (own.empty()) {
        scenario.steps.push_back(stepOf(object, *action));
    } else {
        errors.add("", own.all());
    }
}

void readSteps(const json& object, Scenario& scenario, Errors& errors) {
    const auto steps = object.find("steps");
    if (steps == object.end()) {
        errors.add("steps", "is missing");
    } else if (!steps->is_array() || steps->empty() || steps->size() > kMostSteps) {
        errors.add("steps", "is not a list of 1 to " + std::to_string(kMostSteps) + " steps");
    } else {
        const json length = object.value("seconds", json());
        for (std::size_t index = 0; index < steps->size(); ++index) {
            readStep("steps[" + std::to_string(index) + "]", (*steps)[index], length, scenario, errors);
        }
    }
}

/// Notices what a parser passes over: keys that an object has twice, of which it keeps one. What nests deeper than any
/// scenario is left out, because whatever copies a value goes down all of its levels.
class Watcher {
public:
    bool operator()(int depth, json::parse_event_t event, json& parsed) {
        constexpr int kDeepest = 8;
        isTooDeep = isTooDeep || depth > kDeepest;
        if (isTooDeep) {
            return false;
        }
        const auto level = static_cast<std::size_t>(depth);
        if (event == json::parse_event_t::object_start) {
            seen[level + 1].clear();
        } else if (event == json::parse_event_t::key && !seen[level].insert(parsed.get<std::string>()).second) {
            twice = twice.empty() ? parsed.get<std::string>() : twice;
        }
        return true;
    }
    bool isTooDeep = false;
    std::string twice;

private:
    std::map<std::size_t, std::set<std::string>> seen;  // the keys so far, by depth
};

/// Nothing, with the line and column, if the text is no JSON.
std::optional<json> parsed(const std::string& text, Errors& errors) {
    try {
        Watcher watcher;
        json value = json::parse(
            text, [&watcher](int depth, json::parse_event_t event, json& part) { return watcher(depth, event, part); });
        if (watcher.isTooDeep) {
            errors.add("", "it is nested deeper than any scenario");
            return std::nullopt;
        }
        if (!watcher.twice.empty()) {
            errors.add("", "an object has the key " + shown(watcher.twice) + " twice");
        }
        return value;
    } catch (const json::exception& failure) {
        const std::string what = failure.what();
        const std::size_t line = what.find("line ");
        errors.add("", line == std::string::npos ? what : what.substr(line));
        return std::nullopt;
    }
}

}  // namespace

std::optional<Scenario> parseScenario(const std::string& text, std::string& error) {
    Errors errors;
    Scenario scenario;
    if (text.size() > control::kLongestScenario) {
        errors.add("", "it has more than " + std::to_string(control::kLongestScenario) + " bytes");
    } else if (std::optional<json> object = parsed(text, errors)) {
        if (object->is_object()) {
            check("", *object, scenarioKeys(), {"steps"}, errors);
            readSteps(*object, scenario, errors);
        } else {
            errors.add("", "a scenario is an object");
        }
        if (errors.empty()) {
            scenario.name = object->value("name", std::string("scenario"));
            scenario.rounds = object->value("repeat", std::uint64_t{1});
            scenario.stay = object->value("stay", false);
            if (object->contains("seconds")) {
                scenario.length = Step::Duration((*object)["seconds"].get<double>());
            }
        }
    }
    error = errors.all();
    return errors.empty() ? std::optional<Scenario>(std::move(scenario)) : std::nullopt;
}

}  // namespace dtvservice
