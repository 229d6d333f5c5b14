// What every fuzzer checks of the code under test, beside crashes: its work and its output.
//
// Work: the memory that an input asks for, in all, must stay below a constant and a multiple of the input's size. So an
// input that makes the code repeat itself fails, on any machine and under any sanitizer. Builds for fuzzing limit the
// processor time in the same way, far above what any input needs.
// Output: no control character and no mark that changes the writing direction leaves the process in a log line or in a
// text for people. JSON can be parsed.
//
// Threads: any; one input at a time.
// Fails:   ends the process with a line that says what is wrong, which a fuzzer takes for a crash.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "input.h"

namespace fuzz {

/// Bytes of memory that an input may ask for: `base` and `perByte` for each byte of it.
struct Allowance {
    std::size_t base;
    std::size_t perByte;
};

/// Checks the work between its construction and its end.
class Work {
public:
    Work(std::size_t newInputSize, Allowance newAllowance);
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;
    ~Work();

private:
    const std::size_t inputSize;
    const Allowance allowance;
    const std::uint64_t bytesBefore;
    const double secondsBefore;
};

/// The input so far that came nearest to its limit.
struct MostWork {
    std::size_t inputSize = 0;
    std::uint64_t bytes = 0;
    std::uint64_t allowed = 1;
};
const MostWork& mostWork();

[[noreturn]] void fail(const std::string& what);
inline void expect(bool isRight, const std::string& what) {
    if (!isRight) {
        fail(what);
    }
}
/// A text as a program prints it: only line breaks control a terminal.
void expectPrintable(std::string_view text, const std::string& what);
/// One line that JSON's parser accepts.
void expectJson(const std::string& line, const std::string& what);

/// Checks the log lines since the last call. The fuzzers' processes write theirs to memory, all but traces, which have
/// no text of others.
void checkLog();

/// Runs one input with all checks.
template <typename Body>
int run(const std::uint8_t* data, std::size_t size, Allowance allowance, Body body) {
    {
        const Work work(size, allowance);
        body(Input(data, size));
    }
    checkLog();
    return 0;
}

}  // namespace fuzz
