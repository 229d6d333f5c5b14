// Writes blocks, always with the least significant byte first.
#include "bus/pcapng.h"
#include "pcapng_blocks.h"
#include "words.h"

namespace bus {

using namespace pcapng;

namespace {

constexpr unsigned int kWord = 4;
constexpr unsigned int kHalf = 2;

void add(std::string& bytes, std::uint64_t word, unsigned int width = kWord) {
    addWord(bytes, word, width, ByteOrder::little);
}

void addAligned(std::string& bytes, std::string_view added) {
    bytes += added;
    bytes.append(aligned(added.size()) - added.size(), '\0');
}

void addOption(std::string& bytes, std::uint16_t code, std::string_view value) {
    add(bytes, code, kHalf);
    add(bytes, value.size(), kHalf);
    addAligned(bytes, value);
}

/// The body must be aligned.
std::string block(std::uint32_t type, std::string_view body) {
    const std::size_t length = kLeastBlock + body.size();
    std::string bytes;
    bytes.reserve(length);
    add(bytes, type);
    add(bytes, length);
    bytes += body;
    add(bytes, length);
    return bytes;
}

}  // namespace

std::string pcapngStart() {
    constexpr std::uint64_t kUnknownLength = ~std::uint64_t{0};
    std::string section;
    add(section, kByteOrderMark);
    add(section, kMajorVersion, kHalf);
    add(section, 0, kHalf);
    add(section, kUnknownLength, sizeof kUnknownLength);
    std::string interface;
    add(interface, kLinkType, kHalf);
    add(interface, 0, kHalf);
    add(interface, 0);  // no limit of a packet's length
    addOption(interface, kInterfaceName, "dtv bus");
    addOption(interface, kInterfaceResolution, std::string_view("\x09", 1));
    add(interface, 0);  // the end of the options
    return block(kSectionHeader, section) + block(kInterfaceDescription, interface);
}

std::string pcapngBlock(const Record& record) {
    constexpr unsigned int kBitsOfAWord = 32;
    const std::string packet = pack(record);
    std::string body;
    add(body, 0);  // the interface
    add(body, record.time >> kBitsOfAWord);
    add(body, record.time & 0xFFFFFFFFU);
    add(body, packet.size());
    add(body, packet.size());
    addAligned(body, packet);
    return block(kEnhancedPacket, body);
}

}  // namespace bus
