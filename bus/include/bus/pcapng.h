// Records as a pcapng file, which protocol analysers open: a Section Header Block, an Interface Description Block with
// the link type USER0 and times in nanoseconds, and an Enhanced Packet Block for each record.
// Threads: the functions any; a reader one.
// Blocks:  never.
// Fails:   a reader tells what is wrong and at which byte. It goes on behind a packet that is no record, and ends at a
//          block whose end is unknown.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "bus/record.h"

namespace bus {

/// LINKTYPE_USER0.
constexpr std::uint16_t kLinkType = 147;
/// The longest block that a reader takes: several times the longest message.
constexpr std::size_t kLongestBlock = std::size_t{8} << 20U;

/// The bytes before the first record.
std::string pcapngStart();
std::string pcapngBlock(const Record& record);

/// Reads a file or a stream as its bytes come. Takes files of both byte orders, and what other programs add to them.
class PcapngReader {
public:
    void add(std::string_view bytes);
    /// True if something was taken from the bytes so far: a record, or a problem, which is then not empty.
    bool take(Record& record, std::string& problem);
    /// At the end of the bytes: what is wrong with it; empty if it was complete.
    std::string problemAtEnd() const;

private:
    struct Interface {
        std::uint16_t linkType;
        std::uint64_t unitsPerSecond;
    };

    bool fail(const std::string& what, std::string& problem);
    std::uint64_t word(std::size_t at, unsigned int width) const;
    bool findBlock(std::size_t& length, std::string& problem);
    bool readBlock(std::size_t length, Record& record, std::string& problem);
    bool readInterface(std::size_t length, std::string& problem);
    bool readPacket(std::size_t length, Record& record, std::string& problem);
    std::string here() const { return "at byte " + std::to_string(position) + ": "; }

    std::string received;
    std::size_t taken = 0;       // bytes of `received`
    std::uint64_t position = 0;  // of the next block in the file
    bool isLittle = true;
    bool hasSection = false;
    bool isBroken = false;
    std::vector<Interface> interfaces;
};

}  // namespace bus
