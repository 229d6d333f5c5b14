// RecordedFiles: the records of one file, or of several in the order of their times.
// Threads: one.
// Blocks:  while reading.
// Fails:   throws std::runtime_error for a file that cannot be read. What is wrong within one is told with its name and
//          place, and the rest is read.
#pragma once

#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "bus/pcapng.h"

namespace dtvmon {

/// The records of a file, one after the other.
class RecordedFile {
public:
    using Tell = std::function<void(const std::string& problem)>;

    RecordedFile(const std::string& newPath, Tell newTell);
    /// False at the end.
    bool take(bus::Record& record);

private:
    struct Closer {
        void operator()(std::FILE* opened) const { std::fclose(opened); }
    };

    bool readPart();

    std::string path;
    Tell tell;
    std::unique_ptr<std::FILE, Closer> file;
    bus::PcapngReader reader;
};

/// `tell` gets each problem, `add` each record.
void readFiles(const std::vector<std::string>& paths, const RecordedFile::Tell& tell,
               const std::function<void(bus::Record record)>& add);

}  // namespace dtvmon
