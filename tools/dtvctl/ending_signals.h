// EndingSignals: SIGINT and SIGTERM, which do not end the process but wait until they are asked for.
// Threads: make it before the process has others.
// Blocks:  comeWithin(), for the given time at most.
// Fails:   std::runtime_error if the system gives no descriptor.
#pragma once

#include <chrono>

namespace dtvctl {

class EndingSignals {
public:
    EndingSignals();
    EndingSignals(const EndingSignals&) = delete;
    EndingSignals& operator=(const EndingSignals&) = delete;
    ~EndingSignals();

    /// Becomes readable when one comes, and stays so.
    int fd() const { return descriptor; }
    /// Whether one comes within this time, or has come.
    bool comeWithin(std::chrono::milliseconds longest) const;

private:
    int descriptor = -1;
};

}  // namespace dtvctl
