// Counts the open descriptors of a process.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <filesystem>
#include <string>

inline std::size_t descriptorsOf(pid_t process) {
    const std::filesystem::directory_iterator entries("/proc/" + std::to_string(process) + "/fd");
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}
