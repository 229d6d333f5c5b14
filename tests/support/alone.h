// For tests that fork, or that look at what a process does once.
#pragma once

#include <gtest/gtest.h>

/// Whether this process runs one test only, as under ctest: no other has made objects or threads.
inline bool isAlone() {
    return testing::UnitTest::GetInstance()->test_to_run_count() == 1;
}
