// The host's debug library: writes each line with one system call, and works until the very end of the process.
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <string>
#include <string_view>

#include "log_sink.h"
#include "ovx/debug.h"
#include "settings.h"
#include "text/printable.h"

namespace {

constexpr std::uint32_t kUnread = 0xFFFFFFFF;
constexpr std::uint32_t kImportanceMask = 0xFFFF;
constexpr std::size_t kDumpBytesPerLine = 16;

/// The first check reads it from the settings. After that an unwanted line costs only one load.
std::atomic<std::uint32_t> threshold{kUnread};

std::uint32_t readThreshold() {
    const std::uint32_t read = host::settings().logThreshold;
    threshold.store(read, std::memory_order_relaxed);
    return read;
}

char levelLetter(std::uint32_t level) {
    const std::uint32_t importance = level & kImportanceMask;
    return importance < 1000 ? '*' : importance < 3000 ? 'F' : importance < 4000 ? 'W' : importance < 5000 ? 'O' : 'T';
}

/// The time of day. The calendar is asked once a second: what it says is kept with the second it belongs to.
class TimeOfDay {
public:
    explicit TimeOfDay(std::time_t now) {
        static std::atomic<std::uint64_t> kept{0};
        std::uint64_t packed = kept.load(std::memory_order_relaxed);
        if (packed >> kSecondAt != (static_cast<std::uint64_t>(now) & kSecondMask) || packed == 0) {
            tm local{};
            localtime_r(&now, &local);
            packed = static_cast<std::uint64_t>(now) << kSecondAt |
                     static_cast<std::uint64_t>((local.tm_hour * 60 + local.tm_min) * 60 + local.tm_sec);
            kept.store(packed, std::memory_order_relaxed);
        }
        seconds = static_cast<unsigned int>(packed & kDayMask);
    }
    unsigned int hour() const { return seconds / 3600; }
    unsigned int minute() const { return seconds / 60 % 60; }
    unsigned int second() const { return seconds % 60; }

private:
    static constexpr unsigned int kSecondAt = 17;  // above the seconds of a day
    static constexpr std::uint64_t kDayMask = (std::uint64_t{1} << kSecondAt) - 1;
    static constexpr std::uint64_t kSecondMask = ~std::uint64_t{0} >> kSecondAt;

    unsigned int seconds;
};

void appendDigits(std::string& line, unsigned int number, unsigned int digits) {
    char text[10];
    for (unsigned int at = digits; at > 0; --at, number /= 10) {
        text[at - 1] = static_cast<char>('0' + number % 10);
    }
    line.append(text, digits);
}

/// "hh:mm:ss.mmm process level "
void appendPrefix(std::string& line, std::uint32_t level, pid_t process) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const TimeOfDay time(now.tv_sec);
    appendDigits(line, time.hour(), 2);
    line += ':';
    appendDigits(line, time.minute(), 2);
    line += ':';
    appendDigits(line, time.second(), 2);
    line += '.';
    appendDigits(line, static_cast<unsigned int>(now.tv_nsec / 1000000), 3);
    line += ' ';
    line += std::to_string(process);
    line += ' ';
    line += levelLetter(level);
    line += ' ';
}

/// Appends a text as one line: removes newlines at its end, and escapes what could control a terminal.
void appendEscaped(std::string& line, std::string_view text) {
    while (!text.empty() && text.back() == '\n') {
        text.remove_suffix(1);
    }
    if (text::isPlainAscii(text)) {
        line += text;
    } else {
        line += text::printable(text);
    }
}

std::string dumpRow(const std::uint8_t* bytes, std::size_t at, std::size_t count) {
    char text[16];
    std::snprintf(text, sizeof text, "%04zX ", at);
    std::string row = text;
    std::string characters;
    for (std::size_t column = 0; column < kDumpBytesPerLine; ++column) {
        if (at + column < count) {
            const std::uint8_t byte = bytes[at + column];
            std::snprintf(text, sizeof text, " %02X", byte);
            row += text;
            characters += byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.';
        } else {
            row += "   ";
        }
    }
    return row + "  " + characters;
}

}  // namespace

int ovxDebugCheckLevelGetFrameAndChunk(std::uint32_t level, ovxDebugFrame** frame, ovxDebugChunk** chunk) {
    std::uint32_t limit = threshold.load(std::memory_order_relaxed);
    if (limit == kUnread) {
        limit = readThreshold();
    }
    *frame = nullptr;
    *chunk = nullptr;
    return (level & kImportanceMask) <= limit ? 1 : 0;
}

void ovxDebugOutput0(ovxDebugFrame*, ovxDebugChunk*, std::uint32_t level, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    char shortText[512];
    const int length = std::vsnprintf(shortText, sizeof shortText, format, arguments);
    va_end(arguments);
    std::string line;
    line.reserve(sizeof shortText);
    const pid_t process = getpid();
    appendPrefix(line, level, process);
    if (length >= 0 && static_cast<std::size_t>(length) < sizeof shortText) {
        appendEscaped(line, {shortText, static_cast<std::size_t>(length)});
    } else if (length >= 0) {
        std::string longText(static_cast<std::size_t>(length), '\0');
        std::vsnprintf(longText.data(), longText.size() + 1, format, again);
        appendEscaped(line, longText);
    }
    va_end(again);
    line += '\n';
    host::LogSink::instance().write(line, process);
}

void dump_memory(const char* title, const void* bytes, std::uint32_t count, int value) {
    constexpr std::uint32_t kOrdinary = 0x5F0FA0;
    ovxDebugFrame* frame = nullptr;
    ovxDebugChunk* chunk = nullptr;
    if (ovxDebugCheckLevelGetFrameAndChunk(kOrdinary, &frame, &chunk) == 0) {
        return;
    }
    ovxDebugOutput0(frame, chunk, kOrdinary, "%s (%d), %u bytes\n", title, value, count);
    for (std::size_t at = 0; at < count; at += kDumpBytesPerLine) {
        ovxDebugOutput0(frame, chunk, kOrdinary, "%s\n",
                        dumpRow(static_cast<const std::uint8_t*>(bytes), at, count).c_str());
    }
}
