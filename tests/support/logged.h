// Matchers for captured log lines, by their fields.
#pragma once

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "ovx/log.h"
#include "recording/recording_platform.h"

namespace logged {

/// A line of the shape without a tag.
inline auto plain(std::uint32_t level, const std::string& file, const std::string& function,
                  const std::string& message) {
    using recording::LogLine;
    return testing::AllOf(testing::Field("level", &LogLine::level, level), testing::Field("tag", &LogLine::tag, ""),
                          testing::Field("file", &LogLine::file, file),
                          testing::Field("line", &LogLine::line, testing::Gt(0)),
                          testing::Field("function", &LogLine::function, function),
                          testing::Field("message", &LogLine::message, message));
}

/// A line of the shape with a tag.
inline auto tagged(std::uint32_t level, const std::string& tag, const std::string& file, const std::string& function,
                   const std::string& message) {
    using recording::LogLine;
    return testing::AllOf(testing::Field("level", &LogLine::level, level), testing::Field("tag", &LogLine::tag, tag),
                          testing::Field("file", &LogLine::file, file),
                          testing::Field("line", &LogLine::line, testing::Gt(0)),
                          testing::Field("function", &LogLine::function, function),
                          testing::Field("message", &LogLine::message, message));
}

/// Captured lines without the trace lines.
inline std::vector<recording::LogLine> withoutTraces() {
    std::vector<recording::LogLine> lines;
    for (recording::LogLine& line : recording::log()) {
        if (line.level != blog::kTrace) {
            lines.push_back(std::move(line));
        }
    }
    return lines;
}

/// The texts of the trace lines, with the line number taken out: "[TRACE -> f(IN)] file:f() \n".
inline std::vector<std::string> traces() {
    std::vector<std::string> texts;
    for (const recording::LogLine& line : recording::log()) {
        if (line.level == blog::kTrace) {
            std::string text = line.text;
            const std::size_t first = text.find(".cpp:") + 4;
            const std::size_t second = text.find(':', first + 1);
            if (second != std::string::npos) {
                text.erase(first, second - first);
            }
            texts.push_back(text);
        }
    }
    return texts;
}

/// The captured lines of the service object's and the DVB API's units in their order, as "function: message", traces as
/// "-> function", "<- function" and "[TRACE] function".
inline std::vector<std::string> story() {
    std::vector<std::string> told;
    for (const recording::LogLine& line : recording::log()) {
        const bool isTrace = line.level == blog::kTrace;
        const std::size_t fileAt = isTrace ? line.text.find("] ") + 2 : 0;
        const std::string file = isTrace ? line.text.substr(fileAt) : line.file;
        if (file.rfind("browser_dvb", 0) != 0) {
            continue;
        }
        const std::string mark = line.text.substr(0, fileAt);
        if (!isTrace) {
            told.push_back(line.function + ": " + line.message);
        } else if (mark.rfind("[TRACE ", 0) == 0) {
            told.push_back(mark.substr(7, mark.find('(') - 7));
        } else {
            told.push_back("[TRACE] " + file.substr(file.rfind(':') + 1, file.size() - file.rfind(':') - 2));
        }
    }
    return told;
}

}  // namespace logged
