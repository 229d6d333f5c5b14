// tsmake: writes a small broadcast, for demonstrations and tests.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "description.h"
#include "scheduler.h"

namespace {

constexpr int kUsageError = 2;
constexpr unsigned int kDefaultSeconds = 4;
constexpr unsigned int kMostSeconds = 3600;

constexpr const char* kUsage =
    "usage: tsmake OUT.ts [--description FILE] [--seconds N]   write a multiplex\n"
    "       tsmake --print-sample                             print the sample's description\n"
    "\n"
    "Writes the multiplex that FILE describes, or the sample: three television services and a radio. The same call\n"
    "writes the same bytes.\n"
    "  --description FILE   JSON with // comments; docs/tsmake.md lists the keys, and the sample is an example\n"
    "  --seconds N          length of the broadcast, 1 to 3600; default: 4\n";

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

struct Options {
    std::string output;
    std::string description;
    unsigned int seconds = kDefaultSeconds;
};

Options parseOptions(int argc, char** argv) {
    Options options;
    for (int index = 1; index < argc; ++index) {
        const std::string argument = argv[index];
        if (argument == "--help") {
            std::fputs(kUsage, stdout);
            std::exit(0);
        }
        if (argument == "--print-sample") {
            std::fputs(tsmake::sampleDescription(), stdout);
            std::exit(0);
        }
        if (argument == "--seconds" || argument == "--description") {
            if (++index == argc) {
                endWithUsage(argument + " needs a value");
            }
            if (argument == "--seconds") {
                options.seconds = secondsOf(argv[index]);
            } else {
                options.description = argv[index];
            }
        } else if (!options.output.empty() || argument[0] == '-') {
            endWithUsage("unexpected argument " + argument);
        } else {
            options.output = argument;
        }
    }
    if (options.output.empty()) {
        endWithUsage("no file named");
    }
    return options;
}

[[noreturn]] void endWithError(const std::string& error) {
    std::fprintf(stderr, "tsmake: %s\n", error.c_str());
    std::exit(1);
}

tsmake::Multiplex multiplexOf(const std::string& path) {
    if (path.empty()) {
        return tsmake::sampleMultiplex();
    }
    std::ifstream file(path, std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (!file.is_open() || file.bad()) {
        endWithError("cannot read " + path + ": " + std::strerror(errno));
    }
    std::string error;
    const std::optional<tsmake::Multiplex> multiplex = tsmake::parseDescription(text, error);
    if (!multiplex) {
        endWithError(path + ": " + error);
    }
    return *multiplex;
}

void write(const tsmake::Multiplex& multiplex, const Options& options) {
    std::FILE* const file = std::fopen(options.output.c_str(), "wbe");
    if (file == nullptr) {
        endWithError("cannot write " + options.output + ": " + std::strerror(errno));
    }
    std::string problem;
    try {
        constexpr std::size_t kPacketSize = 188;
        tsmake::writeMultiplex(multiplex, options.seconds,
                               [file](const std::uint8_t* packet) { std::fwrite(packet, 1, kPacketSize, file); });
    } catch (const std::length_error& failure) {
        problem = failure.what();
    }
    const bool failed = std::ferror(file) != 0;
    if (std::fclose(file) != 0 || failed) {
        problem = std::strerror(errno);
    }
    if (!problem.empty()) {
        // An incomplete file would look like a complete broadcast, so remove it. Never remove a device.
        if (std::filesystem::is_regular_file(std::filesystem::symlink_status(options.output))) {
            std::remove(options.output.c_str());
        }
        endWithError("cannot write " + options.output + ": " + problem);
    }
}

}  // namespace

int main(int argc, char** argv) {
    const Options options = parseOptions(argc, argv);
    write(multiplexOf(options.description), options);
    return 0;
}
