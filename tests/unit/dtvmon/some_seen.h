// Records as dtvmon sees them.
#pragma once

#include <string>

#include "seen.h"

constexpr std::uint32_t kPtsRequest = 0x28671249;
constexpr std::uint32_t kFilterClose = 0x28671244;
constexpr std::uint32_t kAitSection = 0x28671255;

/// 2026-01-01 00:00:00 UTC and a part of a second.
constexpr std::uint64_t kMidnight = 1767225600123456789;

inline bus::Record aRecord(bus::Kind kind, std::uint32_t message = 0, const std::string& bytes = "") {
    bus::Record record;
    record.time = kMidnight;
    record.kind = kind;
    record.browser = 2;
    record.process = 4711;
    record.program = "dvbshell";
    record.message = message;
    record.bytes = bytes;
    return record;
}

inline dtvmon::Seen aMessage(std::uint32_t message = kPtsRequest,
                             const std::string& bytes = std::string("\0\0\0\x07", 4)) {
    return dtvmon::see(aRecord(bus::Kind::message, message, bytes));
}
