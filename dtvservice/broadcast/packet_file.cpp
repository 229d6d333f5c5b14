// Reading packets and finding their beginning.
#include "packet_file.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

namespace broadcast {

namespace {

constexpr std::size_t kBufferSize = 1024 * kPacketSize;
/// Sync bytes in step that make a beginning; fewer only where the file ends.
constexpr std::size_t kStepsToBelieve = 4;

}  // namespace

PacketFile::PacketFile(std::string newPath, std::FILE* newFile)
    : path(std::move(newPath)), file(newFile), buffer(kBufferSize) {}

std::unique_ptr<PacketFile> PacketFile::open(const std::string& path, std::string& error) {
    std::FILE* const opened = std::fopen(path.c_str(), "rbe");
    if (opened == nullptr) {
        error = "cannot open " + path + ": " + std::strerror(errno);
        return nullptr;
    }
    std::unique_ptr<PacketFile> result(new PacketFile(path, opened));
    struct stat found {};
    if (fstat(fileno(opened), &found) == 0 && S_ISDIR(found.st_mode)) {
        error = path + " is a directory";
        return nullptr;
    }
    if (result->next() == nullptr) {
        error = !result->problem.empty() ? result->problem
                : result->skipped == 0
                    ? path + " is empty"
                    : path + ": no transport stream packets found in " + std::to_string(result->skipped) + " bytes";
        return nullptr;
    }
    result->rewind();
    return result;
}

void PacketFile::rewind() {
    std::rewind(file.get());
    at = 0;
    end = 0;
    exhausted = false;
    synchronised = false;
    skipped = 0;
}

/// Moves what is left to the front and reads behind it; false when nothing came.
bool PacketFile::fill() {
    if (exhausted) {
        return false;
    }
    std::memmove(buffer.data(), buffer.data() + at, end - at);
    end -= at;
    at = 0;
    const std::size_t count = std::fread(buffer.data() + end, 1, buffer.size() - end, file.get());
    if (count == 0) {
        exhausted = true;
        if (std::ferror(file.get()) != 0) {
            problem = "cannot read " + path + ": " + std::strerror(errno);
        }
    }
    end += count;
    return count != 0;
}

bool PacketFile::inStep(std::size_t position) const {
    for (std::size_t step = 0; step < kStepsToBelieve; ++step) {
        const std::size_t where = position + step * kPacketSize;
        if (where >= end) {
            return step != 0 && position + kPacketSize <= end;
        }
        if (buffer[where] != kSyncByte) {
            return false;
        }
    }
    return true;
}

const std::uint8_t* PacketFile::next() {
    while (true) {
        const std::size_t needed = synchronised ? kPacketSize : kStepsToBelieve * kPacketSize;
        while (end - at < needed && fill()) {
        }
        if (end - at < kPacketSize) {
            skipped += end - at;
            at = end;
            return nullptr;
        }
        if (synchronised ? buffer[at] == kSyncByte : inStep(at)) {
            synchronised = true;
            at += kPacketSize;
            return buffer.data() + at - kPacketSize;
        }
        synchronised = false;
        ++at;
        ++skipped;
    }
}

}  // namespace broadcast
