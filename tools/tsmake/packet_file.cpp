// Reads a file packet by packet.
#include "packet_file.h"

#include <fstream>
#include <map>
#include <vector>

namespace tsmake {

namespace {

/// The sections of one PID.
class Sections {
public:
    void take(const TsPacketBytes& packet, const std::function<void(si::Bytes)>& onSection) {
        std::size_t at = payloadOf(packet);
        if (at == kTsPacketSize) {
            return;
        }
        if (startsUnit(packet)) {
            const std::size_t pointer = std::min(at + 1 + packet[at], kTsPacketSize);
            append(packet, at + 1, pointer, onSection);
            isOpen = true;
            bytes.clear();
            at = pointer;
        }
        append(packet, at, kTsPacketSize, onSection);
    }

private:
    void append(const TsPacketBytes& packet, std::size_t from, std::size_t to,
                const std::function<void(si::Bytes)>& onSection) {
        if (!isOpen) {
            return;
        }
        bytes.insert(bytes.end(), packet.begin() + static_cast<std::ptrdiff_t>(from),
                     packet.begin() + static_cast<std::ptrdiff_t>(to));
        while (bytes.size() >= si::kSectionHeaderSize && bytes.size() >= si::announcedSize(bytes.data())) {
            const std::size_t size = si::announcedSize(bytes.data());
            if (const si::Bytes section(bytes.data(), size); si::crcIsRight(section)) {
                onSection(section);
            }
            bytes.erase(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
        }
    }

    bool isOpen = false;
    std::vector<std::uint8_t> bytes;
};

}  // namespace

void forEachPacket(const std::string& file, const std::function<bool(std::size_t, const TsPacketBytes&)>& take) {
    constexpr std::uint8_t kSync = 0x47;
    std::ifstream input(file, std::ios::binary);
    TsPacketBytes packet{};
    for (std::size_t number = 0; input.read(reinterpret_cast<char*>(packet.data()), kTsPacketSize); ++number) {
        if (packet[0] != kSync) {
            throw ReadError("packet " + std::to_string(number + 1) + " does not begin with 0x47");
        }
        const bool isWrong = (packet[1] & 0x80U) != 0;
        if (!isWrong && !take(number, packet)) {
            return;
        }
    }
    if (!input.is_open() || input.bad()) {
        throw ReadError("cannot be read");
    }
}

si::Pmt pmtOf(const std::string& file, std::uint16_t pid) {
    std::map<std::uint16_t, Sections> tables;
    tables.try_emplace(0);
    std::optional<si::Pmt> found;
    std::string ignored;
    const auto onSection = [&](std::uint16_t from, si::Bytes section) {
        if (from == 0) {
            for (const si::Pat::Program& program : si::parsePat(section, ignored).value_or(si::Pat()).programs) {
                tables.try_emplace(program.pmtPid);
            }
            return;
        }
        const std::optional<si::Pmt> pmt = si::parsePmt(section, ignored);
        const auto isIt = [pid](const si::Pmt::Stream& stream) { return stream.pid == pid; };
        if (pmt && !found && std::any_of(pmt->streams.begin(), pmt->streams.end(), isIt)) {
            found = pmt;
        }
    };
    forEachPacket(file, [&](std::size_t, const TsPacketBytes& packet) {
        if (const auto table = tables.find(pidOf(packet)); table != tables.end()) {
            table->second.take(packet,
                               [&onSection, from = table->first](si::Bytes section) { onSection(from, section); });
        }
        return !found;
    });
    if (!found) {
        throw ReadError("no PMT lists the PID");
    }
    return *found;
}

}  // namespace tsmake
