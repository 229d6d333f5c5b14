// Writes the two lines of a traced operation.
#include "trace_scope.h"

#include "ovx/log.h"

namespace velmora::dvbservice {

TraceScope::TraceScope(const char* tracedFunction, const char* tracedFile, int tracedLine)
    : function(tracedFunction), file(tracedFile), line(tracedLine) {
    BLOG_WRITE(blog::kTrace, "[TRACE -> %s(IN)] %s:%d:%s() \n", function, blog_base_name(file), line, function);
}

TraceScope::~TraceScope() {
    BLOG_WRITE(blog::kTrace, "[TRACE <- %s(OUT)] %s:%d:%s() \n", function, blog_base_name(file), line, function);
}

}  // namespace velmora::dvbservice
