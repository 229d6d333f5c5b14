// Writes files.
#include "file_writer.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "bus/pcapng.h"

namespace dtvmon {

FileWriter::FileWriter(const std::string& newPath) : path(newPath), file(std::fopen(path.c_str(), "wbe")) {
    if (!file) {
        fail();
    }
    write(bus::pcapngStart());
    flush();
}

void FileWriter::add(const Seen& seen) {
    write(bus::pcapngBlock(seen.record));
}

void FileWriter::flush() {
    if (std::fflush(file.get()) != 0) {
        fail();
    }
}

void FileWriter::write(const std::string& bytes) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), file.get()) != bytes.size()) {
        fail();
    }
}

void FileWriter::fail() const {
    throw std::runtime_error(path + ": " + std::strerror(errno));
}

}  // namespace dtvmon
