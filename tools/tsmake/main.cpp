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
#include <vector>

#include "command_line.h"
#include "command_line/arguments.h"
#include "command_line/output.h"
#include "command_line/standard_descriptors.h"
#include "description.h"
#include "folders.h"
#include "scheduler.h"
#include "stream_reader.h"

namespace {

struct Options {
    std::string output;
    std::string description;
    std::vector<tsmake::StreamPlace> streams;
    unsigned int seconds = 4;
};

Options optionsOf(const command_line::Arguments& arguments) {
    constexpr unsigned int kMostSeconds = 3600;
    const command_line::Program& program = tsmake::commandLine();
    Options options;
    if (arguments.words.empty()) {
        command_line::endWithUsageError(program, "no file named");
    }
    options.output = arguments.words[0];
    options.description = arguments.value("description").value_or("");
    for (const std::string& stream : arguments.values("insert")) {
        std::string error;
        const std::optional<tsmake::StreamPlace> place = tsmake::parseStreamPlace(stream, error);
        if (!place) {
            command_line::endWithUsageError(program, "--insert: " + error);
        }
        options.streams.push_back(*place);
    }
    if (const std::optional<std::string> seconds = arguments.value("seconds")) {
        options.seconds =
            static_cast<unsigned int>(command_line::numberOrEnd(program, "--seconds", *seconds, 1, kMostSeconds));
    }
    return options;
}

[[noreturn]] void endWithError(const std::string& error) {
    std::fprintf(stderr, "tsmake: %s\n", error.c_str());
    std::exit(1);
}

tsmake::Multiplex described(const std::string& path) {
    if (path.empty()) {
        return tsmake::sampleMultiplex();
    }
    std::ifstream file(path, std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (!file.is_open() || file.bad()) {
        endWithError("cannot read " + path + ": " + std::strerror(errno));
    }
    std::string error;
    std::optional<tsmake::Multiplex> multiplex = tsmake::parseDescription(text, error);
    const std::string folder = std::filesystem::path(path).parent_path().string();
    if (!multiplex || !tsmake::readFolders(*multiplex, folder, error) ||
        !tsmake::readStreams(*multiplex, folder, error)) {
        endWithError(path + ": " + error);
    }
    return *multiplex;
}

tsmake::Multiplex multiplexOf(const Options& options) {
    tsmake::Multiplex multiplex = described(options.description);
    for (const tsmake::StreamPlace& place : options.streams) {
        std::string error;
        if (!tsmake::insertStream(multiplex, place, error)) {
            endWithError(error);
        }
    }
    return multiplex;
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
    command_line::keepStandardDescriptors();
    command_line::checkOutputAtExit("tsmake");
    const command_line::Arguments arguments = command_line::parseOrEnd(tsmake::commandLine(), argc, argv);
    if (arguments.has("print-sample")) {
        std::fputs(tsmake::sampleDescription(), stdout);
        return 0;
    }
    const Options options = optionsOf(arguments);
    write(multiplexOf(options), options);
    return 0;
}
