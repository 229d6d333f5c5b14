// Records of the bus, and recordings of them.
#pragma once

#include <string>

#include "bus/pcapng.h"
#include "message_image.h"
#include "message_transfer.h"
#include "recording.h"

namespace recorded {

namespace messages = lo::browserdvbservice::messages;

constexpr std::uint64_t kMillisecond = 1000000;

/// Any record, `at` milliseconds after the first.
inline bus::Record record(bus::Kind kind, std::uint64_t at, std::uint32_t browser = 1) {
    bus::Record record;
    record.kind = kind;
    record.time = at * kMillisecond;
    record.browser = browser;
    return record;
}

template <typename Message, typename... Values>
bus::Record message(std::uint64_t at, const Values&... values) {
    bus::Record made = record(bus::Kind::message, at);
    made.direction = static_cast<bus::Direction>(Message::header().direction);
    made.message = Message::header().messageId;
    made.bytes = dtvservice::MessageImage::of(values...);
    return made;
}

template <typename Message>
bus::Record refusal(std::uint64_t at, const std::string& why) {
    bus::Record made = message<Message>(at);
    made.kind = bus::Kind::refused;
    made.bytes.clear();
    made.text = why;
    return made;
}

inline bus::Record section(std::uint64_t at, const std::string& filter, const std::string& bytes) {
    bus::Record made = record(bus::Kind::sectionQueued, at);
    made.direction = bus::Direction::toBrowser;
    made.text = filter;
    made.bytes = bytes;
    return made;
}

inline std::string fileOf(const std::vector<bus::Record>& records) {
    std::string bytes = bus::pcapngStart();
    for (const bus::Record& each : records) {
        bytes += bus::pcapngBlock(each);
    }
    return bytes;
}

inline dtvservice::Recording recordingOf(const std::vector<bus::Record>& records) {
    return dtvservice::readRecordedBytes(fileOf(records));
}

}  // namespace recorded
