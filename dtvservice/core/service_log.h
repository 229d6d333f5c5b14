// The reference service's log lines carry this tag.
#pragma once

#include "ovx/log.h"

namespace dtvservice {

constexpr const char* kBlogTag = "DtvService";

}  // namespace dtvservice
