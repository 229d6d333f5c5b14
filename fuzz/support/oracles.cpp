// Counts allocations, keeps the log in memory, and checks texts.
#include "oracles.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <new>
#include <nlohmann/json.hpp>

#include "text/printable.h"

namespace {

std::atomic<std::uint64_t> allocatedBytes{0};

void* allocate(std::size_t size) {
    allocatedBytes.fetch_add(size, std::memory_order_relaxed);
    return std::malloc(size == 0 ? 1 : size);
}

/// A file in memory that the log goes to. Made before anything is logged.
class LogMemory {
public:
    LogMemory() : file(memfd_create("log", MFD_CLOEXEC)) {
        setenv("DTV_LOG_FILE", ("/proc/self/fd/" + std::to_string(file)).c_str(), 1);
        setenv("DTV_LOG_LEVEL", "ordinary", 1);
    }
    LogMemory(const LogMemory&) = delete;
    LogMemory& operator=(const LogMemory&) = delete;
    ~LogMemory() = default;

    std::string take() const {
        const off_t size = lseek(file, 0, SEEK_END);
        std::string text(size > 0 ? static_cast<std::size_t>(size) : 0, '\0');
        if (text.empty()) {
            return text;
        }
        const ssize_t count = pread(file, text.data(), text.size(), 0);
        fuzz::expect(count == size && ftruncate(file, 0) == 0, "the log cannot be read");
        return text;
    }

private:
    const int file;
};

const LogMemory logMemory;
fuzz::MostWork most;

double processorSeconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

}  // namespace

void* operator new(std::size_t size) {
    if (void* const memory = allocate(size)) {
        return memory;
    }
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace fuzz {

Work::Work(std::size_t newInputSize, Allowance newAllowance)
    : inputSize(newInputSize),
      allowance(newAllowance),
      bytesBefore(allocatedBytes.load(std::memory_order_relaxed)),
      secondsBefore(processorSeconds()) {}

Work::~Work() {
    const std::uint64_t bytes = allocatedBytes.load(std::memory_order_relaxed) - bytesBefore;
    const std::uint64_t allowed = allowance.base + std::uint64_t{allowance.perByte} * inputSize;
    if (static_cast<double>(bytes) * static_cast<double>(most.allowed) >
        static_cast<double>(most.bytes) * static_cast<double>(allowed)) {
        most = {inputSize, bytes, allowed};
    }
    expect(bytes <= allowed, "an input of " + std::to_string(inputSize) + " bytes asks for " + std::to_string(bytes) +
                                 " bytes of memory in all, " + std::to_string(allowed) + " are allowed");
#ifdef DTV_FUZZING
    constexpr double kBaseSeconds = 5;
    constexpr double kSecondsPerByte = 0.0005;
    const double seconds = processorSeconds() - secondsBefore;
    expect(seconds <= kBaseSeconds + kSecondsPerByte * static_cast<double>(inputSize),
           "an input of " + std::to_string(inputSize) + " bytes takes " + std::to_string(seconds) +
               " s of processor time");
#endif
}

const MostWork& mostWork() {
    return most;
}

void fail(const std::string& what) {
    std::fprintf(stderr, "fuzz: %s\n", what.c_str());
    std::abort();
}

void expectPrintable(std::string_view text, const std::string& what) {
    const auto isPlain = [](char character) { return (character >= ' ' && character <= '~') || character == '\n'; };
    if (std::all_of(text.begin(), text.end(), isPlain)) {
        return;  // the usual case, without a look at each character's code
    }
    const auto escape = [&](std::string_view bytes, text::Character character) {
        if (bytes != "\n") {
            fail(what + (character.size == 0 ? ": not UTF-8: " : ": controls a terminal: ") + text::printable(text));
        }
    };
    text::eachCharacter(
        text, [](std::string_view) {}, escape);
}

void expectJson(const std::string& line, const std::string& what) {
    expect(line.find('\n') == std::string::npos && nlohmann::json::accept(line),
           what + ": not one line of JSON: " + text::printable(line));
}

void checkLog() {
    expectPrintable(logMemory.take(), "the log");
}

}  // namespace fuzz
