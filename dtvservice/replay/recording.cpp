// Reads recordings.
#include "recording.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <new>

#include "bus/pcapng.h"
#include "message_layout.h"

namespace dtvservice {

namespace {

constexpr std::size_t kLongestSection = 4096;
constexpr std::size_t kLongestFilterName = 255;
constexpr std::size_t kMostProblems = 20;
constexpr std::size_t kFarthestRefusal = 100;  // steps behind its event

/// Collects the steps of all browsers while the file is read.
class Reader {
public:
    explicit Reader(Recording& newTarget) : target(newTarget) {}

    void add(std::string_view bytes) {
        file.add(bytes);
        bus::Record record;
        std::string problem;
        while (file.take(record, problem)) {
            ++records;
            if (problem.empty()) {
                keep(std::move(record));
            } else {
                note(problem);
            }
        }
    }
    void end() {
        if (const std::string problem = file.problemAtEnd(); !problem.empty()) {
            note(problem);
        }
    }

private:
    void note(const std::string& problem) {
        if (target.problems.size() < kMostProblems) {
            target.problems.push_back(problem);
        } else {
            ++target.moreProblems;
        }
    }
    void noteHere(const std::string& problem) { note("record " + std::to_string(records) + ": " + problem); }

    RecordedBrowser& browserOf(const bus::Record& record) {
        const auto key = std::make_pair(record.side, record.browser);
        const auto found = current.find(key);
        const bool isNew = found == current.end() || record.kind == bus::Kind::connected;
        if (isNew) {
            current[key] = target.browsers.size();
            target.browsers.emplace_back();
            target.browsers.back().number = record.browser;
            target.browsers.back().beganBefore = record.kind != bus::Kind::connected || record.text == "before";
        }
        RecordedBrowser& browser = target.browsers[current[key]];
        if (browser.program.empty()) {
            browser.program = record.program;
        }
        return browser;
    }

    RecordedStep stepOf(bus::Record&& record, RecordedStep::Kind kind) const {
        RecordedStep step;
        step.kind = kind;
        step.time = record.time;
        step.record = records;
        step.text = std::move(record.text);
        step.bytes = std::move(record.bytes);
        step.result = record.result;
        return step;
    }

    void keep(bus::Record&& record) {
        switch (record.kind) {
            case bus::Kind::lost:
                target.lost += record.count;
                break;
            case bus::Kind::connected:
                browserOf(record);
                break;
            case bus::Kind::disconnected: {
                RecordedBrowser& browser = browserOf(record);
                browser.steps.push_back(stepOf(std::move(record), RecordedStep::Kind::end));
                break;
            }
            case bus::Kind::sectionQueued:
            case bus::Kind::sectionDropped:
                keepSection(std::move(record));
                break;
            default:
                keepMessage(std::move(record));
        }
    }

    void keepSection(bus::Record&& record) {
        if (record.bytes.size() > kLongestSection) {
            noteHere("a section of " + std::to_string(record.bytes.size()) + " bytes, more than " +
                     std::to_string(kLongestSection));
        } else if (record.text.size() > kLongestFilterName) {
            noteHere("a filter's name of " + std::to_string(record.text.size()) + " bytes, more than " +
                     std::to_string(kLongestFilterName));
        } else {
            const bool isQueued = record.kind == bus::Kind::sectionQueued;
            target.droppedSections += isQueued ? 0 : 1;
            RecordedBrowser& browser = browserOf(record);
            browser.steps.push_back(
                stepOf(std::move(record), isQueued ? RecordedStep::Kind::section : RecordedStep::Kind::droppedSection));
        }
    }

    void keepMessage(bus::Record&& record) {
        const message_fields::Message* const message = message_fields::findMessage(record.message);
        if (message == nullptr) {
            noteHere("no message has the identifier " + message_fields::hexadecimalNumber(record.message, 1));
            return;
        }
        const bool isCommand = message->kind == message_fields::Message::Kind::command;
        if (isCommand != (record.direction == bus::Direction::toService)) {
            noteHere(std::string(message->name) + " in the wrong direction");
            return;
        }
        if (record.kind == bus::Kind::refused) {
            keepRefusal(std::move(record), *message, isCommand);
            return;
        }
        std::string error;
        std::vector<message_fields::FieldValue> values;
        if (!message_fields::readImage(*message, record.bytes, values, error)) {
            noteHere(std::string(message->name) + ": " + error);
            return;
        }
        RecordedBrowser& browser = browserOf(record);
        browser.steps.push_back(
            stepOf(std::move(record), isCommand ? RecordedStep::Kind::command : RecordedStep::Kind::event));
        browser.steps.back().bytes.clear();
        browser.steps.back().message = message;
        browser.steps.back().values = std::move(values);
    }

    /// An event is recorded before it leaves, so one that did not leave stands shortly before its refusal.
    void keepRefusal(bus::Record&& record, const message_fields::Message& message, bool isCommand) {
        RecordedBrowser& browser = browserOf(record);
        if (isCommand) {
            browser.steps.push_back(stepOf(std::move(record), RecordedStep::Kind::refusedCommand));
            browser.steps.back().message = &message;
            return;
        }
        const auto first = browser.steps.rbegin();
        const auto end = first + static_cast<std::ptrdiff_t>(std::min(browser.steps.size(), kFarthestRefusal));
        const auto unsent = std::find_if(first, end, [&message](const RecordedStep& step) {
            return step.kind == RecordedStep::Kind::event && step.message == &message;
        });
        if (unsent != end) {
            unsent->kind = RecordedStep::Kind::unsentEvent;
            unsent->text = record.text;
            unsent->result = record.result;
            ++target.unsentEvents;
        }
    }

    Recording& target;
    bus::PcapngReader file;
    std::size_t records = 0;
    std::map<std::pair<bus::Side, std::uint32_t>, std::size_t> current;  // index of a browser that is connected
};

/// What a file that is there is not to be read for.
std::string whyNotRead(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        return "";  // opening it tells why
    }
    if (!S_ISREG(status.st_mode)) {
        return path + " is not a regular file";
    }
    const auto size = static_cast<std::uint64_t>(status.st_size);
    return size <= kLongestRecording
               ? ""
               : path + " has " + std::to_string(size) + " bytes, more than " + std::to_string(kLongestRecording) +
                     "; write what is needed of it to another file: dtvmon --read FILE --browser N --write OTHER";
}

Recording readAll(std::FILE& file) {
    constexpr std::size_t kPart = 65536;
    std::array<char, kPart> bytes{};
    Recording recording;
    Reader reader(recording);
    while (const std::size_t count = std::fread(bytes.data(), 1, bytes.size(), &file)) {
        reader.add({bytes.data(), count});
    }
    reader.end();
    return recording;
}

}  // namespace

Recording readRecordedBytes(std::string_view bytes) {
    Recording recording;
    Reader reader(recording);
    reader.add(bytes);
    reader.end();
    return recording;
}

std::optional<Recording> readRecording(const std::string& path, std::string& error) {
    error = whyNotRead(path);
    if (!error.empty()) {
        return std::nullopt;
    }
    const auto closer = [](std::FILE* file) { std::fclose(file); };
    const std::unique_ptr<std::FILE, decltype(closer)> file(std::fopen(path.c_str(), "rbe"), closer);
    if (!file) {
        error = "cannot open " + path + ": " + std::strerror(errno);
        return std::nullopt;
    }
    try {
        Recording recording = readAll(*file);
        if (std::ferror(file.get()) != 0) {
            error = "cannot read " + path + ": " + std::strerror(errno);
            return std::nullopt;
        }
        if (!recording.browsers.empty()) {
            return recording;
        }
        error =
            path + ": " + (recording.problems.empty() ? "no browser is in the recording" : recording.problems.front());
    } catch (const std::bad_alloc&) {
        error = path + ": there is not enough memory for the recording";
    }
    return std::nullopt;
}

}  // namespace dtvservice
