// Settings of the host platform, read once from the environment. The library itself has no settings.
//   DTV_RUN_DIR    directory of sockets and locks      default $XDG_RUNTIME_DIR/dtv, else /tmp/dtv-<uid>
//   DTV_LOG_LEVEL  off, failure, warning, ordinary, trace   default warning
//   DTV_LOG_FILE   file to append log lines to         default standard error
//   DTV_BUS_FILE   file for what the process says to services and hears from them   default none
//   DTV_CLIENT_RATE  packets a second that a service reads of one client; 0: all   default 0
// Threads: any.
// Blocks:  never.
// Fails:   an invalid value writes a line to standard error, and the default applies.
#pragma once

#include <cstdint>
#include <string>

namespace host {

struct Settings {
    std::string runDirectory;
    std::uint32_t logThreshold;  ///< lines with a higher importance number are not written
    std::string logFile;         ///< empty for standard error
    std::string busFile;         ///< empty for none
    std::uint32_t clientRate;    ///< packets a second that a service reads of one client in the long run; 0: all
};

/// The settings of the process; never destroyed.
const Settings& settings();

/// Reads the settings from the environment.
Settings readSettings();

}  // namespace host
