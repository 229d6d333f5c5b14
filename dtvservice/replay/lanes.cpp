// Takes recorded browsers apart.
#include "lanes.h"

#include <algorithm>
#include <array>
#include <map>
#include <string_view>

namespace dtvservice {

namespace {

constexpr std::array<std::string_view, 5> kUnanswered = {"cmdUpdateIPCChannelNames", "cmdDataReadFinished",
                                                         "cmdStopOSDDetection", "cmdHandleHbbtvStatus",
                                                         "cmdSendOpAppInstallStatus"};
constexpr std::array<std::string_view, 2> kOpening = {"cmdFilterOpen", "cmdStartPMTRequest"};

template <typename Names>
bool isIn(const Names& names, const message_fields::Message& message) {
    return std::find(names.begin(), names.end(), message.name) != names.end();
}

/// The filter or PMT request that a step is about; empty for others.
std::string filterOf(const RecordedStep& step) {
    if (step.kind == RecordedStep::Kind::section || step.kind == RecordedStep::Kind::droppedSection) {
        return step.text;
    }
    for (const message_fields::FieldValue& value : step.values) {
        const auto* const text = std::get_if<std::string>(&value.value);
        if (text != nullptr && std::string_view(value.field->name) == "filter_session") {
            return *text;
        }
    }
    return "";
}

}  // namespace

bool isUnanswered(const message_fields::Message& command) {
    return isIn(kUnanswered, command);
}

std::vector<Lane> lanesOf(const RecordedBrowser& browser) {
    std::vector<Lane> lanes(1);
    std::map<std::string, std::size_t> filters;  // index of the lane
    for (const RecordedStep& step : browser.steps) {
        const bool isCommand = step.kind == RecordedStep::Kind::command;
        if (isCommand && isUnanswered(*step.message)) {
            continue;
        }
        const std::string filter = filterOf(step);
        if (isCommand && isIn(kOpening, *step.message)) {
            filters[filter] = lanes.size();
            lanes.push_back({{}, true});
        }
        const auto found = filters.find(filter);
        lanes[found == filters.end() ? 0 : found->second].steps.push_back(&step);
    }
    return lanes;
}

}  // namespace dtvservice
