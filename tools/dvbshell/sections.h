// Section filters from the command line: opens a filter, and prints or saves its sections.
// Threads: the program's main thread; sections arrive through a queue of their own.
// Blocks:  until enough sections have arrived or the time is up; up to ten seconds for the DTV service's answer.
// Fails:   with a line on standard error that names what is missing or could not be written.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "events.h"
#include "printer.h"

namespace dvbshell {

struct SectionsRequest {
    enum class Show { decoded, hexadecimal, file };

    bool pmtOfService = false;  ///< request the PMT of a service; `pid` is the service_id
    unsigned int pid = 0;
    std::string match;  ///< byte 0 is table_id, byte 1 the section's byte 3 and so on
    std::string mask;   ///< same length as `match`
    std::optional<unsigned int> count;
    std::chrono::seconds longest{0};
    Show show = Show::decoded;
    std::string path;  ///< the file for Show::file
};

/// Puts the value ID[/MASK] of --table in front of the pattern: byte 0 becomes the table_id. False for other text.
bool setTable(const std::string& text, SectionsRequest& request);
/// Reads "0x12" or "18", up to `most`; false for other text.
bool parseUnsigned(const std::string& text, unsigned int most, unsigned int& number);

/// Returns 0 when `count` sections have arrived, or at least one without `count`.
int runSections(const std::string& libraryPath, const SectionsRequest& request, Printer& printer);

}  // namespace dvbshell
