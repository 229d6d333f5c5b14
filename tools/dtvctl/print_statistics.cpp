// Lays out the answer to `statistics` in columns.
#include <algorithm>
#include <cstdio>
#include <iterator>
#include <nlohmann/json.hpp>

#include "print_answers.h"

namespace dtvctl {

using nlohmann::json;

namespace {

struct Column {
    const char* key;
    const char* title;
    int width;
};

/// At most 100 characters together.
constexpr Column kColumns[] = {{"pid", "PID", 6},
                               {"bit_rate", "bit/s", 10},
                               {"packets", "packets", 12},
                               {"idle_seconds", "idle s", 9},
                               {"continuity_errors", "continuity", 11},
                               {"transport_errors", "transport", 10},
                               {"scrambled_packets", "scrambled", 11},
                               {"sections", "sections", 10},
                               {"incomplete_sections", "incomplete", 11},
                               {"crc_errors", "CRC", 7}};

std::string inColumn(const Column& column, const std::string& text) {
    const auto width = static_cast<std::size_t>(column.width);
    // A number that is too long still has a space before it.
    return std::string(std::max<std::size_t>(width - std::min(width, text.size()), 1), ' ') + text;
}

std::string valueText(const json& value) {
    if (!value.is_number_float()) {
        return value.dump(-1, ' ', true);
    }
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", value.get<double>());
    return text;
}

std::string tableOf(const json& pids) {
    std::string text;
    for (const Column& column : kColumns) {
        text += inColumn(column, column.title);
    }
    text += "\n";
    for (const json& pid : pids) {
        for (const Column& column : kColumns) {
            text += inColumn(column, valueText(pid.at(column.key)));
        }
        text += "\n";
    }
    return text;
}

/// What concerns the whole input only.
std::string sumsOf(const json& input) {
    const auto count = [&input](const char* what, const char* key) {
        return std::string(what) + " " + valueText(input.at(key));
    };
    return "  " + count("packets", "packets") + ", " + count("skipped bytes", "skipped_bytes") + ", " +
           count("dropped packets", "dropped_packets") + "\n  " + count("RTP packets lost", "rtp_packets_lost") + ", " +
           count("datagrams that are no RTP", "rtp_datagrams_unreadable") + "\n";
}

}  // namespace

std::string statisticsText(const json& answer) {
    std::string text =
        "filters " + valueText(answer.at("filters")) + ", queue drops " + valueText(answer.at("queue_drops")) + "\n";
    for (const json& input : answer.at("inputs")) {
        text += "\n" + inputText(input) + "\n" + sumsOf(input);
        text += input.at("pids").empty() ? "" : tableOf(input.at("pids"));
    }
    return text;
}

}  // namespace dtvctl
