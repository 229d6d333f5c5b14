// TraceScope: writes a trace line when an operation begins and another when it ends, however it ends.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

namespace velmora::dvbservice {

class TraceScope {
public:
    /// Keeps the pointers `tracedFunction` and `tracedFile`; the texts are not copied.
    TraceScope(const char* tracedFunction, const char* tracedFile, int tracedLine);
    TraceScope(const TraceScope&) = delete;
    TraceScope& operator=(const TraceScope&) = delete;
    ~TraceScope();

private:
    const char* function;
    const char* file;
    int line;
};

}  // namespace velmora::dvbservice

/// Put this first in every traced operation.
#define TRACE_SCOPE() const ::velmora::dvbservice::TraceScope traceScope(__func__, __FILE__, __LINE__)
