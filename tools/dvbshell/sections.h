// Following section filters: prints, saves or counts the sections.
// Threads: one; sections arrive through a queue of their own.
// Blocks:  until enough sections have arrived or the time is up.
// Fails:   with a line that names what is missing or could not be written.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "filter.h"

namespace dvbshell {

struct SectionsRequest {
    enum class Show { decoded, hexadecimal, file };

    unsigned int pid = 0;
    Pattern pattern;
    std::optional<unsigned int> count;
    std::chrono::seconds longest{0};
    Show show = Show::decoded;
    std::string path;  ///< the file for Show::file
};

/// Puts the value ID[/MASK] of --table in front of the pattern: byte 0 becomes the table_id. False for other text.
bool setTable(const std::string& text, Pattern& pattern);

/// Returns kDone when `count` sections have arrived, or at least one without `count`.
int followSections(Session& session, const SectionsRequest& request);
/// Prints the PMT of a service.
int followPmt(Session& session, unsigned int serviceId, std::chrono::seconds longest);
/// The section of a service's PMT; none when it does not come in time.
std::optional<std::string> awaitPmt(Session& session, unsigned int serviceId, Clock::time_point until);

}  // namespace dvbshell
