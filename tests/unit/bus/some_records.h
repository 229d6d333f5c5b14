// A record whose values all differ, and its comparison.
#pragma once

#include <gtest/gtest.h>

#include "bus/record.h"

inline bus::Record someRecord() {
    bus::Record record;
    record.time = 1767225600123456789;
    record.kind = bus::Kind::refused;
    record.direction = bus::Direction::toBrowser;
    record.side = bus::Side::browser;
    record.browser = 0x01020304;
    record.process = 70000;
    record.message = 0x2867125A;
    record.result = -107;
    record.count = 9;
    record.program = "dvbshell";
    record.text = "why";
    record.bytes = std::string("\x00\xFF\x0A", 3);
    return record;
}

inline void expectSame(const bus::Record& one, const bus::Record& other) {
    EXPECT_EQ(one.time, other.time);
    EXPECT_EQ(one.kind, other.kind);
    EXPECT_EQ(one.direction, other.direction);
    EXPECT_EQ(one.side, other.side);
    EXPECT_EQ(one.browser, other.browser);
    EXPECT_EQ(one.process, other.process);
    EXPECT_EQ(one.message, other.message);
    EXPECT_EQ(one.result, other.result);
    EXPECT_EQ(one.count, other.count);
    EXPECT_EQ(one.program, other.program);
    EXPECT_EQ(one.text, other.text);
    EXPECT_EQ(one.bytes, other.bytes);
}
