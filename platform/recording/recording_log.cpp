// The recording debug library: keeps every wanted line and splits it into its fields.
#include <cstdarg>
#include <cstdio>
#include <ostream>

#include "ovx/log.h"
#include "recorder.h"

namespace recording {

namespace {

std::string formatText(const char* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

/// Moves the text before a mark into `field` and removes both from `rest`. False when the mark is missing.
bool takeUntil(std::string& rest, const std::string& mark, std::string& field) {
    const std::size_t at = rest.find(mark);
    if (at == std::string::npos) {
        return false;
    }
    field = rest.substr(0, at);
    rest.erase(0, at + mark.size());
    return true;
}

/// Splits "[tag] file:line:function(): message", with or without the tag. A line of another form only keeps its text.
void takeApart(LogLine& line) {
    LogLine parts;
    std::string rest = line.text;
    std::string number;
    if (!rest.empty() && rest[0] == '[') {
        rest.erase(0, 1);
        if (!takeUntil(rest, "] ", parts.tag)) {
            return;
        }
    }
    const bool shaped = takeUntil(rest, ":", parts.file) && takeUntil(rest, ":", number) &&
                        takeUntil(rest, "(): ", parts.function) && !number.empty() &&
                        number.find_first_not_of("0123456789") == std::string::npos;
    if (shaped) {
        line.tag = parts.tag;
        line.file = parts.file;
        line.line = std::stoi(number);
        line.function = parts.function;
        line.message = rest;
    }
}

std::string levelInWords(std::uint32_t level) {
    switch (level) {
        case blog::kAlways:
            return "always";
        case blog::kFailure:
            return "failure";
        case blog::kUnsupported:
            return "unsupported";
        case blog::kOrdinary:
            return "ordinary";
        case blog::kTrace:
            return "trace";
        default:
            char number[16];
            std::snprintf(number, sizeof number, "0x%X", static_cast<unsigned int>(level));
            return std::string("level ") + number;
    }
}

std::string printable(const std::string& text) {
    std::string shown;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (character == '\n') {
            shown += "\\n";
        } else if (byte < 0x20 || byte == 0x7F) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02X", static_cast<unsigned int>(byte));
            shown += escaped;
        } else {
            shown += character;
        }
    }
    return shown;
}

}  // namespace

std::string shownLine(std::uint32_t level, const std::string& text) {
    return "\n    " + levelInWords(level) + ": " + printable(text);
}

void PrintTo(const LogLine& line, std::ostream* stream) {
    *stream << shownLine(line.level, line.text);
}

std::vector<LogLine> log() {
    Recorder& recorder = Recorder::instance();
    const locks::Lock lock(recorder.mutex);
    return recorder.log;
}

void setLogAction(std::function<void(const LogLine&)> action) {
    Recorder& recorder = Recorder::instance();
    const locks::Lock lock(recorder.mutex);
    recorder.logAction = std::move(action);
}

std::vector<LogLine> logOf(const std::string& function) {
    std::vector<LogLine> lines;
    for (LogLine& line : log()) {
        if (line.function == function) {
            lines.push_back(std::move(line));
        }
    }
    return lines;
}

bool waitForLog(const std::string& part) {
    Recorder& recorder = Recorder::instance();
    return recorder.waitFor([&]() REQUIRES(recorder.mutex) {
        for (const LogLine& line : recorder.log) {
            if (line.message.find(part) != std::string::npos) {
                return true;
            }
        }
        return false;
    });
}

std::vector<MemoryDump> dumps() {
    Recorder& recorder = Recorder::instance();
    const locks::Lock lock(recorder.mutex);
    return recorder.dumps;
}

void setLogThreshold(std::uint32_t threshold) {
    Recorder::instance().logThreshold = threshold;
}
std::uint64_t levelChecks() {
    return Recorder::instance().levelChecks;
}
std::uint64_t formattedLines() {
    return Recorder::instance().formattedLines;
}

}  // namespace recording

int ovxDebugCheckLevelGetFrameAndChunk(std::uint32_t level, ovxDebugFrame** frame, ovxDebugChunk** chunk) {
    recording::Recorder& recorder = recording::Recorder::instance();
    ++recorder.levelChecks;
    *frame = nullptr;
    *chunk = nullptr;
    return (level & 0xFFFFU) <= recorder.logThreshold ? 1 : 0;
}

void ovxDebugOutput0(ovxDebugFrame*, ovxDebugChunk*, std::uint32_t level, const char* format, ...) {
    recording::Recorder& recorder = recording::Recorder::instance();
    ++recorder.formattedLines;
    recording::LogLine line;
    line.level = level;
    line.format = format;
    va_list arguments;
    va_start(arguments, format);
    line.text = recording::formatText(format, arguments);
    va_end(arguments);
    recording::takeApart(line);
    std::function<void(const recording::LogLine&)> action;
    {
        const locks::Lock lock(recorder.mutex);
        recorder.log.push_back(line);
        action = recorder.logAction;
    }
    recorder.changed.notify_all();
    if (action) {
        action(line);
    }
}

void dump_memory(const char* title, const void* bytes, std::uint32_t count, int value) {
    recording::Recorder& recorder = recording::Recorder::instance();
    const auto* first = static_cast<const std::uint8_t*>(bytes);
    const locks::Lock lock(recorder.mutex);
    recorder.dumps.push_back({title, std::vector<std::uint8_t>(first, first + count), value});
}
