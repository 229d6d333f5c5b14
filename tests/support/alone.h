// For tests that fork or that check something a process does only once.
#pragma once

#include <gtest/gtest.h>

/// Whether this process runs only one test, as under ctest: then no other test has created objects or threads.
inline bool isAlone() {
    return testing::UnitTest::GetInstance()->test_to_run_count() == 1;
}
