// What the process of a test has logged. The host's log lines go to a file in the test's own run directory.
#pragma once

#include <fstream>
#include <iterator>
#include <string>

#include "run_directory.h"

/// Made before the first log line, because the host then reads where the log is.
inline const std::string kOwnRunDirectory = OwnRunDirectory::instance().path();

inline std::string logText() {
    std::ifstream file(kOwnRunDirectory + "/log");
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline std::size_t timesLogged(const std::string& text) {
    const std::string log = logText();
    std::size_t times = 0;
    for (std::size_t at = log.find(text); at != std::string::npos; at = log.find(text, at + 1)) {
        ++times;
    }
    return times;
}
