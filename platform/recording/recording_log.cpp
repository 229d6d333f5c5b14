// The recording debug library: every wanted line is kept, taken apart into its fields.
#include <cstdarg>
#include <cstdio>
#include <regex>

#include "ovx/debug.h"
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

void takeApart(LogLine& line) {
    static const std::regex shape(R"((?:\[([^\]]*)\] )?([^\s:]+):(\d+):([^\s(]+)\(\): ([^]*))");
    std::smatch fields;
    if (std::regex_match(line.text, fields, shape)) {
        line.tag = fields[1];
        line.file = fields[2];
        line.line = std::stoi(fields[3]);
        line.function = fields[4];
        line.message = fields[5];
    }
}

}  // namespace

std::vector<LogLine> log() {
    Recorder& recorder = Recorder::instance();
    const std::lock_guard<std::mutex> lock(recorder.mutex);
    return recorder.log;
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
    return recorder.waitFor([&] {
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
    const std::lock_guard<std::mutex> lock(recorder.mutex);
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
    {
        const std::lock_guard<std::mutex> lock(recorder.mutex);
        recorder.log.push_back(std::move(line));
    }
    recorder.changed.notify_all();
}

void dump_memory(const char* title, const void* bytes, std::uint32_t count, int value) {
    recording::Recorder& recorder = recording::Recorder::instance();
    const auto* first = static_cast<const std::uint8_t*>(bytes);
    const std::lock_guard<std::mutex> lock(recorder.mutex);
    recorder.dumps.push_back({title, std::vector<std::uint8_t>(first, first + count), value});
}
