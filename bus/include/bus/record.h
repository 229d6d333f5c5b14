// A record of the bus: a message between a browser and the DTV service, or what else happened between them. Its bytes,
// all numbers in network byte order:
//
//    0      1      2      3      4      8      12     16     20     24     26     28
//    +------+------+------+------+------+------+------+------+------+------+------+--------+------+-------+
//    | 1    | kind | dir. | side | brow-| pro- | mes- | re-  | count| pro- | text | pro-   | text | bytes |
//    |      |      |      |      | ser  | cess | sage | sult |      | gram | length gram   |      |       |
//    +------+------+------+------+------+------+------+------+------+------+------+--------+------+-------+
//
// Threads: any.
// Blocks:  never.
// Fails:   unpack() with a text that names the error and its position; never reads outside the bytes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace bus {

enum class Kind : std::uint8_t {
    message,
    connected,
    disconnected,
    refused,         ///< a message that was not done or did not leave; the text says why
    sectionQueued,   ///< the bytes are the section, the text is the name of its filter
    sectionDropped,  ///< the same for a section that the browser's queue did not take
    lost,            ///< records that this reader has missed here
};
constexpr Kind kLastKind = Kind::lost;

enum class Direction : std::uint8_t { toService, toBrowser };

/// Who saw it: the service, or the process of the browser.
enum class Side : std::uint8_t { service, browser };

/// The longest program name or text; a longer one is cut.
constexpr std::size_t kLongestText = 4096;

struct Record {
    std::uint64_t time = 0;  ///< nanoseconds since the epoch; stands outside of the record's bytes
    Kind kind = Kind::message;
    Direction direction = Direction::toService;
    Side side = Side::service;
    std::uint32_t browser = 0;  ///< the service's number of its connection
    std::uint32_t process = 0;  ///< the browser's; 0 if unknown
    std::uint32_t message = 0;  ///< its identifier in the catalogue; 0 for none
    std::int32_t result = 0;    ///< of a refused message: the transport's error number, or 0
    std::uint32_t count = 0;    ///< of lost records
    std::string program;        ///< the browser's; empty if unknown
    std::string text;
    std::string bytes;  ///< the wire image of a message, or a section
};

/// The record's bytes without its time.
std::string pack(const Record& record);
/// No record, with the reason, for bytes that are none.
std::optional<Record> unpack(std::string_view bytes, std::string& error);

/// "message", "section_queued"
const char* nameOf(Kind kind);

}  // namespace bus
