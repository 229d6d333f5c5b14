// The library's section filters, in the process of a test.
#pragma once

#include <gtest/gtest.h>

#include "dvb_section_interface.h"
#include "library.h"

inline velmora::dtv::DVBSectionInterface& sectionFilters() {
    std::string error;
    auto* const filters = static_cast<velmora::dtv::DVBSectionInterface*>(
        dvbshell::loadInterface(LIBRARY_FILE, "SectionFilterAPI", error));
    EXPECT_NE(filters, nullptr) << error;
    return *filters;
}
