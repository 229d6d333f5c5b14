// Reads the file of a scenario.
#include "scenario_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace control {

bool readScenarioFile(const std::string& path, std::string& text, std::string& error) {
    const auto closer = [](std::FILE* file) { std::fclose(file); };
    const std::unique_ptr<std::FILE, decltype(closer)> file(std::fopen(path.c_str(), "rbe"), closer);
    if (!file) {
        error = std::strerror(errno);
        return false;
    }
    text.resize(kLongestScenario + 1);
    errno = 0;
    text.resize(std::fread(text.data(), 1, text.size(), file.get()));
    if (std::ferror(file.get()) != 0) {
        error = std::strerror(errno);
        return false;
    }
    if (text.size() > kLongestScenario) {
        error = "it has more than " + std::to_string(kLongestScenario) + " bytes";
        return false;
    }
    return true;
}

}  // namespace control
