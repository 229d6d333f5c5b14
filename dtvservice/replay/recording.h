// A recording of the bus as dtvmon writes it: for each browser of it what happened, step by step.
// Threads: any.
// Blocks:  readRecording() while it reads the file.
// Fails:   readRecording() with a text; what is wrong in a file but leaves something to play is in `problems`.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bus/record.h"
#include "message_fields.h"

namespace dtvservice {

struct RecordedStep {
    enum class Kind {
        command,
        event,
        unsentEvent,  ///< one that did not leave the service
        section,
        droppedSection,  ///< one that the browser's queue did not take
        refusedCommand,  ///< stands behind its command
        end,             ///< the browser disconnected
    };

    Kind kind = Kind::end;
    std::uint64_t time = 0;                            ///< nanoseconds since the epoch
    std::size_t record = 0;                            ///< its place in the file, 1 for the first
    const message_fields::Message* message = nullptr;  ///< of a command or event
    std::vector<message_fields::FieldValue> values;    ///< of a command or event
    std::string text;                                  ///< a section's filter; why something was refused
    std::string bytes;                                 ///< a section
    std::int32_t result = 0;                           ///< of what was refused
};

/// A connection of a browser.
struct RecordedBrowser {
    std::uint32_t number = 0;  ///< as dtvmon shows it
    std::string program;
    bool beganBefore = false;  ///< the recording began later than the connection
    std::vector<RecordedStep> steps;
};

struct Recording {
    std::vector<RecordedBrowser> browsers;  ///< in the order in which they appear
    std::vector<std::string> problems;      ///< with their positions
    std::size_t moreProblems = 0;           ///< that are only counted
    std::uint64_t lost = 0;                 ///< records that the monitor missed
    std::size_t unsentEvents = 0;
    std::size_t droppedSections = 0;
};

/// Bytes of a file. In memory a recording takes several times as much.
constexpr std::uint64_t kLongestRecording = std::uint64_t{256} << 20U;

/// Nothing, with the reason, if nothing of the file can be played.
std::optional<Recording> readRecording(const std::string& path, std::string& error);

/// The same from a file's bytes.
Recording readRecordedBytes(std::string_view bytes);

}  // namespace dtvservice
