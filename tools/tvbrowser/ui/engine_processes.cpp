// Finds this process's children, and ends them.
#include "engine_processes.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace tvbrowser {

namespace {

/// The parent stands behind the name, which is in parentheses and may have any letters, and the state; 0 if the process
/// has gone.
pid_t parentOf(const std::filesystem::path& process) {
    std::ifstream file(process / "stat");
    const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    const std::size_t nameEnd = text.rfind(')');
    std::istringstream values(nameEnd == std::string::npos ? "" : text.substr(nameEnd + 1));
    char state = 0;
    pid_t parent = 0;
    values >> state >> parent;
    return parent;
}

std::vector<pid_t> children() {
    std::vector<pid_t> found;
    std::error_code failure;
    for (std::filesystem::directory_iterator entry("/proc", failure), end; !failure && entry != end;
         entry.increment(failure)) {
        const std::string name = entry->path().filename().string();
        if (name.find_first_not_of("0123456789") == std::string::npos && parentOf(entry->path()) == getpid()) {
            found.push_back(static_cast<pid_t>(std::strtol(name.c_str(), nullptr, 10)));
        }
    }
    return found;
}

}  // namespace

/// The engine's own thread fetches their exit codes.
void endEngineProcesses() {
    for (const pid_t child : children()) {
        kill(child, SIGKILL);
        siginfo_t ended{};
        waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT);
    }
}

}  // namespace tvbrowser
