// FileWriter: records as a pcapng file, complete whenever nothing comes.
// Threads: one.
// Blocks:  while writing.
// Fails:   throws std::runtime_error with the file's name and the reason.
#pragma once

#include <cstdio>
#include <memory>

#include "sink.h"

namespace dtvmon {

class FileWriter : public Sink {
public:
    explicit FileWriter(const std::string& newPath);
    void add(const Seen& seen) override;
    void pause() override { flush(); }
    void end() override { flush(); }

private:
    struct Closer {
        void operator()(std::FILE* opened) const { std::fclose(opened); }
    };

    void write(const std::string& bytes);
    void flush();
    [[noreturn]] void fail() const;

    std::string path;
    std::unique_ptr<std::FILE, Closer> file;
};

}  // namespace dtvmon
