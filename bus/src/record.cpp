// The bytes of records.
#include "bus/record.h"

#include <algorithm>

#include "words.h"

namespace bus {

namespace {

constexpr std::uint8_t kVersion = 1;
constexpr std::size_t kFixedSize = 28;
constexpr unsigned int kTextLengthWidth = 2;
constexpr unsigned int kWordWidth = 4;

// Offsets of the fixed part.
constexpr std::size_t kKindAt = 1;
constexpr std::size_t kDirectionAt = 2;
constexpr std::size_t kSideAt = 3;
constexpr std::size_t kBrowserAt = 4;
constexpr std::size_t kProcessAt = 8;
constexpr std::size_t kMessageAt = 12;
constexpr std::size_t kResultAt = 16;
constexpr std::size_t kCountAt = 20;
constexpr std::size_t kProgramLengthAt = 24;
constexpr std::size_t kTextLengthAt = 26;

std::uint8_t byteAt(std::string_view bytes, std::size_t at) {
    return static_cast<std::uint8_t>(bytes[at]);
}

std::uint32_t numberAt(std::string_view bytes, std::size_t at) {
    return static_cast<std::uint32_t>(wordAt(bytes, at, kWordWidth, ByteOrder::network));
}

/// Why the fixed part is none; empty if it is one.
std::string problemOf(std::string_view bytes) {
    const auto beyond = [bytes](const char* what, std::size_t at, unsigned int last) {
        return byteAt(bytes, at) <= last ? std::string()
                                         : "no " + std::string(what) + " has the number " +
                                               std::to_string(byteAt(bytes, at)) + " at offset " + std::to_string(at);
    };
    if (bytes.size() < kFixedSize) {
        return "record of " + std::to_string(bytes.size()) + " bytes, at least " + std::to_string(kFixedSize) +
               " expected";
    }
    if (byteAt(bytes, 0) != kVersion) {
        return "record of version " + std::to_string(byteAt(bytes, 0)) + ", " + std::to_string(kVersion) + " expected";
    }
    for (const std::string& problem : {beyond("kind", kKindAt, static_cast<unsigned int>(kLastKind)),
                                       beyond("direction", kDirectionAt, 1), beyond("side", kSideAt, 1)}) {
        if (!problem.empty()) {
            return problem;
        }
    }
    return "";
}

}  // namespace

std::string pack(const Record& record) {
    const std::string_view program = std::string_view(record.program).substr(0, kLongestText);
    const std::string_view text = std::string_view(record.text).substr(0, kLongestText);
    std::string bytes;
    bytes.reserve(kFixedSize + program.size() + text.size() + record.bytes.size());
    bytes += static_cast<char>(kVersion);
    bytes += static_cast<char>(record.kind);
    bytes += static_cast<char>(record.direction);
    bytes += static_cast<char>(record.side);
    for (const std::uint32_t word :
         {record.browser, record.process, record.message, static_cast<std::uint32_t>(record.result), record.count}) {
        addWord(bytes, word, kWordWidth, ByteOrder::network);
    }
    addWord(bytes, program.size(), kTextLengthWidth, ByteOrder::network);
    addWord(bytes, text.size(), kTextLengthWidth, ByteOrder::network);
    bytes += program;
    bytes += text;
    bytes += record.bytes;
    return bytes;
}

std::optional<Record> unpack(std::string_view bytes, std::string& error) {
    error = problemOf(bytes);
    if (!error.empty()) {
        return std::nullopt;
    }
    const auto programLength =
        static_cast<std::size_t>(wordAt(bytes, kProgramLengthAt, kTextLengthWidth, ByteOrder::network));
    const auto textLength =
        static_cast<std::size_t>(wordAt(bytes, kTextLengthAt, kTextLengthWidth, ByteOrder::network));
    if (programLength + textLength > bytes.size() - kFixedSize) {
        error = "the texts have " + std::to_string(programLength + textLength) + " bytes, " +
                std::to_string(bytes.size() - kFixedSize) + " are left";
        return std::nullopt;
    }
    Record record;
    record.kind = static_cast<Kind>(byteAt(bytes, kKindAt));
    record.direction = static_cast<Direction>(byteAt(bytes, kDirectionAt));
    record.side = static_cast<Side>(byteAt(bytes, kSideAt));
    record.browser = numberAt(bytes, kBrowserAt);
    record.process = numberAt(bytes, kProcessAt);
    record.message = numberAt(bytes, kMessageAt);
    record.result = static_cast<std::int32_t>(numberAt(bytes, kResultAt));
    record.count = numberAt(bytes, kCountAt);
    record.program = bytes.substr(kFixedSize, programLength);
    record.text = bytes.substr(kFixedSize + programLength, textLength);
    record.bytes = bytes.substr(kFixedSize + programLength + textLength);
    return record;
}

const char* nameOf(Kind kind) {
    switch (kind) {
        case Kind::message:
            return "message";
        case Kind::connected:
            return "connected";
        case Kind::disconnected:
            return "disconnected";
        case Kind::refused:
            return "refused";
        case Kind::sectionQueued:
            return "section_queued";
        case Kind::sectionDropped:
            return "section_dropped";
        default:
            return "lost";
    }
}

}  // namespace bus
