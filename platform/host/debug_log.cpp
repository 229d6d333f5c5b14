// The host's debug library: writes each line with one system call, and works until the very end of the process.
#include <pthread.h>

#include <atomic>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <string>
#include <string_view>

#include "log_sink.h"
#include "ovx/debug.h"
#include "own_process.h"
#include "settings.h"
#include "text/printable.h"

namespace {

constexpr std::uint32_t kUnread = 0xFFFFFFFF;  // above the importance of any line
constexpr std::uint32_t kImportanceMask = 0xFFFF;
constexpr std::size_t kDumpBytesPerLine = 16;
constexpr std::size_t kMostDigits = 11;  // of a process number, with its sign
constexpr std::size_t kMostPrefix = sizeof "hh:mm:ss.mmm " + kMostDigits + sizeof " F ";
constexpr std::size_t kMostShortText = 512;

/// The first check reads it from the settings. After that an unwanted line costs only one load.
std::atomic<std::uint32_t> threshold{kUnread};

/// Of a line that the threshold lets through, or of the first one. Not inlined: the check of an unwanted line then
/// needs no stack.
[[gnu::noinline]] int isWanted(std::uint32_t level) {
    std::uint32_t limit = threshold.load(std::memory_order_relaxed);
    if (limit == kUnread) {
        limit = host::settings().logThreshold;
        threshold.store(limit, std::memory_order_relaxed);
    }
    return (level & kImportanceMask) <= limit ? 1 : 0;
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

char* putDigits(char* at, unsigned int number, unsigned int digits) {
    for (unsigned int digit = digits; digit > 0; --digit, number /= 10) {
        at[digit - 1] = static_cast<char>('0' + number % 10);
    }
    return at + digits;
}

/// "hh:mm:ss.mmm process level ". Returns its end.
char* putPrefix(char* at, std::uint32_t level, pid_t process) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const TimeOfDay time(now.tv_sec);
    at = putDigits(at, time.hour(), 2);
    *at++ = ':';
    at = putDigits(at, time.minute(), 2);
    *at++ = ':';
    at = putDigits(at, time.second(), 2);
    *at++ = '.';
    at = putDigits(at, static_cast<unsigned int>(now.tv_nsec / 1000000), 3);
    *at++ = ' ';
    at = std::to_chars(at, at + kMostDigits, process).ptr;
    *at++ = ' ';
    *at++ = levelLetter(level);
    *at++ = ' ';
    return at;
}

std::string_view withoutNewlinesAtEnd(std::string_view text) {
    while (!text.empty() && text.back() == '\n') {
        text.remove_suffix(1);
    }
    return text;
}

/// The text of a line, as format and arguments make it, however long it is.
std::string longText(std::size_t length, const char* format, va_list arguments) {
    std::string text(length, '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
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
    if ((level & kImportanceMask) > threshold.load(std::memory_order_relaxed)) {
        return 0;
    }
    *frame = nullptr;
    *chunk = nullptr;
    return isWanted(level);
}

void ovxDebugOutput0(ovxDebugFrame*, ovxDebugChunk*, std::uint32_t level, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    const pid_t process = host::ownProcess();
    // Most lines fit, and are written from here: memory that is asked for costs more than all else but the write.
    char line[kMostPrefix + kMostShortText + sizeof '\n'];
    char* const text = putPrefix(line, level, process);
    const int length = std::vsnprintf(text, kMostShortText, format, arguments);
    va_end(arguments);
    const std::size_t size = length < 0 ? 0 : static_cast<std::size_t>(length);
    const std::string whole = size < kMostShortText ? std::string() : longText(size, format, again);
    va_end(again);
    const std::string_view shown = withoutNewlinesAtEnd(whole.empty() ? std::string_view(text, size) : whole);
    host::LogSink& sink = host::LogSink::instance();
    if (whole.empty() && text::isPlainAscii(shown)) {
        text[shown.size()] = '\n';
        sink.write({line, static_cast<std::size_t>(text - line) + shown.size() + 1}, process);
    } else {
        sink.write(std::string(line, text) + text::printable(shown) + "\n", process);
    }
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
