// The tag of the host platform's own log lines.
#pragma once

#include "ovx/log.h"

namespace host {

constexpr const char* kBlogTag = "HostPlatform";

}  // namespace host
