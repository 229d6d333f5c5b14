// Section filters from the command line: what is asked for, and showing or keeping what comes.
// Threads: the program's main one; sections come through a queue of their own.
// Blocks:  until enough has come or the time is up; while the DTV service answers, ten seconds at most.
// Fails:   with a line on standard error that says what has not come or could not be written.
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

    bool pmtOfService = false;  ///< `pid` is a service_id and its PMT is asked for
    unsigned int pid = 0;
    std::string match;  ///< byte 0 is table_id, byte 1 the section's byte 3 and so on
    std::string mask;   ///< as many bytes
    std::optional<unsigned int> count;
    std::chrono::seconds longest{0};
    Show show = Show::decoded;
    std::string path;  ///< of the file
};

/// Puts --table ID[/MASK] in front of the pattern: byte 0 becomes the table_id. False when it is none.
bool setTable(const std::string& text, SectionsRequest& request);
/// "0x12" or "18", up to `most`; false when it is none.
bool parseUnsigned(const std::string& text, unsigned int most, unsigned int& number);

/// 0 when as many sections as asked for, or at least one, have come.
int runSections(const std::string& libraryPath, const SectionsRequest& request, Printer& printer);

}  // namespace dvbshell
