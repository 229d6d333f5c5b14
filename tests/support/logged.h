// Matchers for captured log lines, by their fields. A failure shows the expected line above the captured ones.
#pragma once

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "ovx/log.h"
#include "recording/recording_platform.h"

namespace logged {

/// An expected line, with any line number. A mismatch prints it like a captured line and names the fields that differ.
class Line {
public:
    using is_gtest_matcher = void;

    explicit Line(recording::LogLine newExpected) : expected(std::move(newExpected)) {}

    bool MatchAndExplain(const recording::LogLine& line, testing::MatchResultListener* listener) const {
        std::string differing;
        const auto compare = [&differing](bool equal, const char* field) {
            differing += equal ? "" : (differing.empty() ? "" : ", ") + std::string(field);
        };
        compare(line.level == expected.level, "level");
        compare(line.tag == expected.tag, "tag");
        compare(line.file == expected.file, "file");
        compare(line.line > 0, "line number");
        compare(line.function == expected.function, "function");
        compare(line.message == expected.message, "message");
        if (!differing.empty()) {
            *listener << "which differs in: " << differing;
        }
        return differing.empty();
    }
    void DescribeTo(std::ostream* stream) const { *stream << "is the line" << shown(); }
    void DescribeNegationTo(std::ostream* stream) const { *stream << "is not the line" << shown(); }

private:
    std::string shown() const {
        const std::string tag = expected.tag.empty() ? "" : "[" + expected.tag + "] ";
        return recording::shownLine(expected.level,
                                    tag + expected.file + ":<number>:" + expected.function + "(): " + expected.message);
    }

    recording::LogLine expected;
};

/// A line of the form with a tag.
inline Line tagged(std::uint32_t level, const std::string& tag, const std::string& file, const std::string& function,
                   const std::string& message) {
    recording::LogLine expected;
    expected.level = level;
    expected.tag = tag;
    expected.file = file;
    expected.function = function;
    expected.message = message;
    return Line(std::move(expected));
}

/// A line of the form without a tag.
inline Line plain(std::uint32_t level, const std::string& file, const std::string& function,
                  const std::string& message) {
    return tagged(level, "", file, function, message);
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

/// The texts of all captured lines.
inline std::vector<std::string> messages() {
    std::vector<std::string> texts;
    for (const recording::LogLine& line : recording::log()) {
        texts.push_back(line.message);
    }
    return texts;
}

/// The texts of the trace lines, without the line number: "[TRACE -> f(IN)] file:f() \n".
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

/// The captured lines of the service object and the DVB API in order, as "function: message"; traces as "-> function",
/// "<- function" and "[TRACE] function".
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
