// Module tags of the library's log lines.
#pragma once

#include "ovx/log.h"

namespace velmora::dvbservice {

/// The browser-facing interfaces and the AIT units.
constexpr const char* kTagBrowser = "B-LOG";
/// The service object, with filters and section channel.
constexpr const char* kTagService = "SectionFilterService";

}  // namespace velmora::dvbservice

/// "[TRACE] file:line:function", for operations that only log their entry. `function` is __func__, or
/// __PRETTY_FUNCTION__ to tell overloads apart.
#define BLOG_TRACE(function) \
    BLOG_WRITE(blog::kTrace, "[TRACE] %s:%d:%s\n", blog_base_name(__FILE__), __LINE__, function)
