// Asks the system.
#include "bus/origin.h"

#include <chrono>
#include <fstream>

namespace bus {

std::uint64_t timeNow() {
    const auto time = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(time).count());
}

std::string programOf(std::uint32_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/comm");
    std::string name;
    std::getline(file, name);
    return name;
}

}  // namespace bus
