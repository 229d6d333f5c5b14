// Opens and reads files.
#include "packet_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <cerrno>
#include <cstring>

namespace dtvservice {

namespace {

/// Reads with zlib, which passes uncompressed files through.
class FileSource final : public ByteSource {
public:
    FileSource(std::string newPath, gzFile newFile) : path(std::move(newPath)), file(newFile) {}
    ~FileSource() override { gzclose(file); }

    std::size_t read(std::uint8_t* bytes, std::size_t capacity) override {
        const int count = gzread(file, bytes, static_cast<unsigned int>(capacity));
        if (count > 0) {
            return static_cast<std::size_t>(count);
        }
        // gzread() may return 0, not a negative count, at the end of a truncated file, so ask for the error here, too.
        int code = Z_OK;
        const char* const text = gzerror(file, &code);
        if (code == Z_ERRNO) {
            problem = "cannot read " + path + ": " + std::strerror(errno);
        } else if (code != Z_OK && code != Z_STREAM_END) {
            // zlib's message begins with its own name for the file.
            const char* const reason = std::strstr(text, ": ");
            problem = "cannot read " + path + ": " + (reason == nullptr ? text : reason + 2);
        }
        return 0;
    }
    bool rewind() override {
        problem.clear();
        return gzrewind(file) == 0;
    }

private:
    std::string path;
    gzFile file;
};

/// Opens a regular file; -1 if it fails. O_NONBLOCK prevents a wait for a pipe's writer.
int openRegular(const std::string& path, struct stat& found, std::string& error) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        error = "cannot open " + path + ": " + std::strerror(errno);
        return -1;
    }
    if (fstat(descriptor, &found) != 0) {
        error = "cannot open " + path + ": " + std::strerror(errno);
    } else if (S_ISDIR(found.st_mode)) {
        error = path + " is a directory";
    } else if (!S_ISREG(found.st_mode)) {
        error = path + " is no regular file; what comes by a pipe is played from standard input, \"-\"";
    } else {
        return descriptor;
    }
    close(descriptor);
    return -1;
}

}  // namespace

std::unique_ptr<PacketFile> PacketFile::open(const std::string& path, std::string& error) {
    struct stat found {};
    const int descriptor = openRegular(path, found, error);
    if (descriptor < 0) {
        return nullptr;
    }
    gzFile const file = gzdopen(descriptor, "rb");
    if (file == nullptr) {
        error = "cannot open " + path + ": no memory";
        close(descriptor);
        return nullptr;
    }
    std::unique_ptr<PacketFile> result(new PacketFile(path, std::make_unique<FileSource>(path, file), found));
    if (result->nextNearby() == nullptr) {
        const std::uint64_t skipped = result->skippedBytes();
        error = !result->error().empty() ? result->error()
                : skipped == 0           ? path + " is empty"
                               : path + ": no transport stream packets found in " + std::to_string(skipped) + " bytes";
        return nullptr;
    }
    result->rewind();
    return result;
}

PacketFile::PacketFile(std::string newPath, std::unique_ptr<ByteSource> source, const struct stat& found)
    : path(std::move(newPath)),
      reader(std::move(source)),
      device(found.st_dev),
      node(found.st_ino),
      size(found.st_size),
      modified(found.st_mtim) {}

bool PacketFile::isReplaced() const {
    struct stat found {};
    return stat(path.c_str(), &found) == 0 &&
           (found.st_dev != device || found.st_ino != node || found.st_size != size ||
            found.st_mtim.tv_sec != modified.tv_sec || found.st_mtim.tv_nsec != modified.tv_nsec);
}

}  // namespace dtvservice
