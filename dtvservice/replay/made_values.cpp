// Keeps the values that stand for each other.
#include "made_values.h"

#include <algorithm>
#include <array>

namespace dtvservice {

using message_fields::FieldValue;
using message_fields::Value;

namespace {

constexpr std::string_view kFilter = "filter_session";
constexpr std::array<std::string_view, 8> kMade = {kFilter,       "audio_session", "ca_session",   "request",
                                                   "pts_request", "section_queue", "unused_queue", "second_queue"};
/// These name a filter that another command has opened. In all other commands a new value begins.
constexpr std::array<std::string_view, 3> kUses = {"cmdFilterClose", "cmdStopPMTRequest", "cmdDataReadFinished"};

bool isMade(std::string_view name) {
    return std::find(kMade.begin(), kMade.end(), name) != kMade.end();
}

/// A DTV service may call a filter's data slot as the filter.
std::string_view kindOf(std::string_view name) {
    return name == "data_slot" ? kFilter : name;
}

}  // namespace

bool MadeValues::fit(const message_fields::Message& command, const Values& recorded, const Values& live) const {
    const bool isUse = std::find(kUses.begin(), kUses.end(), command.name) != kUses.end();
    for (std::size_t index = 0; index < recorded.size(); ++index) {
        const std::string_view name = recorded[index].field->name;
        const Value& wanted = live[index].value;
        const bool fits = !isMade(name) ? liveOf(recorded[index]) == wanted
                          : isUse       ? mayStandFor({name, recorded[index].value}, wanted)
                                        : true;
        if (!fits) {
            return false;
        }
    }
    return true;
}

/// One value does not stand for two.
bool MadeValues::mayStandFor(const Key& recorded, const Value& wanted) const {
    if (const auto found = known.find(recorded); found != known.end()) {
        return found->second == wanted;
    }
    return std::none_of(known.begin(), known.end(),
                        [&](const auto& each) { return each.first.first == recorded.first && each.second == wanted; });
}

void MadeValues::bind(const Values& recorded, const Values& live) {
    for (std::size_t index = 0; index < recorded.size(); ++index) {
        const std::string_view name = recorded[index].field->name;
        if (isMade(name)) {
            known[{name, recorded[index].value}] = live[index].value;
        }
    }
}

Value MadeValues::liveOf(const FieldValue& recorded) const {
    const auto found = known.find({kindOf(recorded.field->name), recorded.value});
    return found == known.end() ? recorded.value : found->second;
}

std::string MadeValues::liveFilter(const std::string& recorded) const {
    const auto found = known.find({kFilter, recorded});
    return found == known.end() ? recorded : std::get<std::string>(found->second);
}

}  // namespace dtvservice
