// Pins threads to CPUs. Measurements that are not pinned swing several times with where the system puts the threads.
#pragma once

#include <sched.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace bench {

inline cpu_set_t only(int cpu) {
    cpu_set_t cpus;
    CPU_ZERO(&cpus);
    CPU_SET(cpu, &cpus);
    return cpus;
}

/// All threads of this process.
inline void pinTo(int cpu) {
    const cpu_set_t cpus = only(cpu);
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
        sched_setaffinity(std::stoi(thread.path().filename()), sizeof cpus, &cpus);
    }
}

/// Where the measuring process runs, and where its peer runs if there are that many CPUs for both.
constexpr int kOwnCpu = 1;
inline int cpuOfPeer(long cpus) {
    return cpus == 1 ? kOwnCpu : 0;
}

}  // namespace bench
