// TraceScope: writes a trace line when an operation is entered and one when it is left, by whichever path.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

namespace velmora::dvbservice {

class TraceScope {
public:
    /// `tracedFunction` and `tracedFile` are kept, not copied.
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

/// Stands at the top of an operation that is traced.
#define TRACE_SCOPE() const ::velmora::dvbservice::TraceScope traceScope(__func__, __FILE__, __LINE__)
