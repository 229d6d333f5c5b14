// Reads files side by side.
#include "recorded_files.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace dtvmon {

namespace {

/// The next record of a file.
struct Next {
    bus::Record record;
    RecordedFile* from;
};

}  // namespace

RecordedFile::RecordedFile(const std::string& newPath, Tell newTell)
    : path(newPath), tell(std::move(newTell)), file(std::fopen(path.c_str(), "rbe")) {
    if (!file) {
        throw std::runtime_error(path + ": " + std::strerror(errno));
    }
}

bool RecordedFile::take(bus::Record& record) {
    std::string problem;
    while (true) {
        if (reader.take(record, problem)) {
            if (problem.empty()) {
                return true;
            }
            tell(path + ": " + problem);
        } else if (!readPart()) {
            return false;
        }
    }
}

/// False at the end.
bool RecordedFile::readPart() {
    if (!file) {
        return false;
    }
    constexpr std::size_t kPart = 65536;
    std::array<char, kPart> bytes{};
    errno = 0;
    const std::size_t count = std::fread(bytes.data(), 1, bytes.size(), file.get());
    if (count != 0) {
        reader.add({bytes.data(), count});
        return true;
    }
    if (std::ferror(file.get()) != 0) {
        throw std::runtime_error(path + ": " + std::strerror(errno));
    }
    file.reset();
    if (const std::string problem = reader.problemAtEnd(); !problem.empty()) {
        tell(path + ": " + problem);
    }
    return false;
}

void readFiles(const std::vector<std::string>& paths, const RecordedFile::Tell& tell,
               const std::function<void(bus::Record record)>& add) {
    std::vector<std::unique_ptr<RecordedFile>> files;
    files.reserve(paths.size());
    for (const std::string& path : paths) {
        files.push_back(std::make_unique<RecordedFile>(path, tell));
    }
    std::vector<Next> nexts;
    for (const std::unique_ptr<RecordedFile>& file : files) {
        if (Next next{{}, file.get()}; file->take(next.record)) {
            nexts.push_back(std::move(next));
        }
    }
    while (!nexts.empty()) {
        const auto first = std::min_element(nexts.begin(), nexts.end(), [](const Next& one, const Next& other) {
            return one.record.time < other.record.time;
        });
        add(std::exchange(first->record, bus::Record()));
        if (!first->from->take(first->record)) {
            nexts.erase(first);
        }
    }
}

}  // namespace dtvmon
