// A stream whose text a test reads back.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

class CapturedOutput {
public:
    CapturedOutput() : stream(open_memstream(&buffer, &size)) {}
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;
    ~CapturedOutput() {
        std::fclose(stream);
        std::free(buffer);
    }

    std::FILE* file() const { return stream; }
    std::string text() const {
        std::fflush(stream);
        return {buffer, size};
    }

private:
    char* buffer = nullptr;
    std::size_t size = 0;
    std::FILE* stream;
};
