// tsmake: writes a small broadcast, for demonstrations and tests.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "scheduler.h"

namespace {

constexpr int kUsageError = 2;
constexpr unsigned int kDefaultSeconds = 4;
constexpr unsigned int kMostSeconds = 3600;

constexpr const char* kUsage =
    "usage: tsmake OUT.ts [--seconds N]\n"
    "\n"
    "Writes a multiplex of three television services and a radio, with PAT, PMT, NIT, SDT, EIT present/following, TDT "
    "and\n"
    "HbbTV AITs. The same call writes the same bytes.\n"
    "  --seconds N   how long it plays, 1 to 3600; 4 unless given\n";

[[noreturn]] void endWithUsage(const std::string& error) {
    std::fprintf(stderr, "tsmake: %s\n%s", error.c_str(), kUsage);
    std::exit(kUsageError);
}

unsigned int secondsOf(const char* text) {
    char* end = nullptr;
    const unsigned long seconds = std::strtoul(text, &end, 10);
    if (*text < '0' || *text > '9' || *end != '\0' || seconds == 0 || seconds > kMostSeconds) {
        endWithUsage(std::string("--seconds: \"") + text + "\" is not a number from 1 to 3600");
    }
    return static_cast<unsigned int>(seconds);
}

}  // namespace

int main(int argc, char** argv) {
    std::string path;
    unsigned int seconds = kDefaultSeconds;
    for (int index = 1; index < argc; ++index) {
        const std::string argument = argv[index];
        if (argument == "--help") {
            std::fputs(kUsage, stdout);
            return 0;
        }
        if (argument == "--seconds") {
            if (++index == argc) {
                endWithUsage("--seconds needs a value");
            }
            seconds = secondsOf(argv[index]);
        } else if (!path.empty() || argument[0] == '-') {
            endWithUsage("unexpected argument " + argument);
        } else {
            path = argument;
        }
    }
    if (path.empty()) {
        endWithUsage("no file named");
    }
    std::FILE* const file = std::fopen(path.c_str(), "wbe");
    if (file == nullptr) {
        std::fprintf(stderr, "tsmake: cannot write %s: %s\n", path.c_str(), std::strerror(errno));
        return 1;
    }
    constexpr std::size_t kPacketSize = 188;
    tsmake::writeMultiplex(tsmake::sampleMultiplex(), seconds,
                           [file](const std::uint8_t* packet) { std::fwrite(packet, 1, kPacketSize, file); });
    const bool failed = std::ferror(file) != 0;
    if (std::fclose(file) != 0 || failed) {
        std::fprintf(stderr, "tsmake: cannot write %s: %s\n", path.c_str(), std::strerror(errno));
        return 1;
    }
    return 0;
}
