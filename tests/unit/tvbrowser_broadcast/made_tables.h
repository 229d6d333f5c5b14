// Sections for the tests of the browser's room for the broadcast.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hex_bytes.h"
#include "si/tables.h"
#include "tables.h"
#include "values.h"

using nlohmann::json;
using tsmake::Section;
using tsmake::SectionWriter;

inline const tsmake::Multiplex kSample = tsmake::sampleMultiplex();

inline si::Pmt pmtOf(const Section& section) {
    std::string error;
    const std::optional<si::Pmt> pmt = si::parsePmt(section, error);
    EXPECT_TRUE(pmt) << error;
    return pmt.value_or(si::Pmt());
}

inline std::string textOf(const std::string& digits) {
    const std::vector<std::uint8_t> bytes = hexBytes(digits);
    return {bytes.begin(), bytes.end()};
}
