// dtvmon: shows what the DTV service and its browsers say to each other, live or from a file.
#include <algorithm>
#include <cstdio>
#include <exception>

#include "bus/pcapng.h"
#include "command_line.h"
#include "command_line/arguments.h"
#include "command_line/output.h"
#include "command_line/standard_descriptors.h"
#include "file_writer.h"
#include "lines.h"
#include "live_records.h"
#include "recorded_files.h"
#include "selection.h"
#include "service_client.h"
#include "statistics.h"
#include "text/printable.h"

namespace {

using command_line::Arguments;

constexpr int kProblem = 1;
constexpr int kNoService = 3;

void complain(const std::string& problem) {
    std::fflush(stdout);
    std::fprintf(stderr, "dtvmon: %s\n", text::printable(problem).c_str());
}

dtvmon::Selection selectionOf(const Arguments& arguments) {
    dtvmon::Selection selection{arguments.values("only"), arguments.values("not"), {}};
    for (const std::string& number : arguments.values("browser")) {
        constexpr std::uint64_t kMost = 0xFFFFFFFF;
        selection.browsers.insert(static_cast<std::uint32_t>(
            command_line::numberOrEnd(dtvmon::commandLine(), "--browser", number, 1, kMost)));
    }
    return selection;
}

std::optional<std::chrono::seconds> secondsOf(const Arguments& arguments) {
    constexpr std::uint64_t kDay = 86400;
    const std::optional<std::string> seconds = arguments.value("seconds");
    if (!seconds) {
        return std::nullopt;
    }
    return std::chrono::seconds(command_line::numberOrEnd(dtvmon::commandLine(), "--seconds", *seconds, 1, kDay));
}

std::unique_ptr<dtvmon::Sink> sinkOf(const Arguments& arguments) {
    if (const std::optional<std::string> path = arguments.value("write")) {
        return std::make_unique<dtvmon::FileWriter>(*path);
    }
    if (arguments.has("statistics")) {
        return std::make_unique<dtvmon::Statistics>(arguments.has("json"));
    }
    return std::make_unique<dtvmon::Lines>(arguments.has("json"), arguments.has("bytes"));
}

/// Passes the records that are wanted to a sink.
class Passage {
public:
    Passage(dtvmon::Selection newSelection, dtvmon::Sink& newSink)
        : selection(std::move(newSelection)), sink(newSink) {}

    void add(bus::Record record) {
        const dtvmon::Seen seen = dtvmon::see(std::move(record));
        if (selection.wants(seen)) {
            sink.add(seen);
        }
    }
    void take(std::string_view bytes) {
        reader.add(bytes);
        bus::Record record;
        std::string problem;
        while (reader.take(record, problem)) {
            if (problem.empty()) {
                add(std::move(record));
            } else {
                tell("the service: " + problem);
            }
        }
        sink.pause();
    }
    void tell(const std::string& problem) {
        isDamaged = true;
        complain(problem);
    }
    bool hasProblem() const { return isDamaged; }

private:
    dtvmon::Selection selection;
    dtvmon::Sink& sink;
    bus::PcapngReader reader;
    bool isDamaged = false;
};

int run(int argc, char** argv) {
    const Arguments arguments = command_line::parseOrEnd(dtvmon::commandLine(), argc, argv);
    const dtvmon::Selection selection = selectionOf(arguments);
    const std::optional<std::chrono::seconds> longest = secondsOf(arguments);
    const std::vector<std::string> paths = arguments.values("read");
    if (const std::optional<std::string> path = arguments.value("write");
        path && std::find(paths.begin(), paths.end(), *path) != paths.end()) {
        command_line::endWithUsageError(dtvmon::commandLine(), "--read and --write name the same file");
    }
    const std::unique_ptr<dtvmon::Sink> sink = sinkOf(arguments);
    Passage passage(selection, *sink);
    try {
        if (paths.empty()) {
            dtvmon::followService(
                control::defaultSocketPath(), longest,
                {[&passage](std::string_view bytes) { passage.take(bytes); }, [&sink] { sink->second(); }});
        } else {
            dtvmon::readFiles(
                paths, [&passage](const std::string& problem) { passage.tell(problem); },
                [&passage](bus::Record record) { passage.add(std::move(record)); });
        }
        sink->end();
    } catch (const dtvctl::NoService&) {
        sink->end();
        throw;
    }
    return passage.hasProblem() ? kProblem : 0;
}

}  // namespace

int main(int argc, char** argv) {
    command_line::keepStandardDescriptors();
    command_line::checkOutputAtExit("dtvmon");
    try {
        return run(argc, argv);
    } catch (const dtvctl::NoService& error) {
        complain(error.what());
        return kNoService;
    } catch (const std::exception& error) {
        complain(error.what());
        return kProblem;
    }
}
