// The host platform's own log lines carry this tag.
#pragma once

#include "ovx/log.h"

namespace host {

constexpr const char* kBlogTag = "HostPlatform";

}  // namespace host
