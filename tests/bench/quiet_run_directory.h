// The test's own run directory, made before the library is used. Without log lines for each message, which would count.
#pragma once

#include <cstdlib>

#include "run_directory.h"

inline const int kLogLevelSet = (OwnRunDirectory::instance(), setenv("DTV_LOG_LEVEL", "failure", 1));
