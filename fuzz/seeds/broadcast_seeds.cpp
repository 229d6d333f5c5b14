// Sections and packets of generated broadcasts.
#include <set>

#include "broadcast_input.h"
#include "description.h"
#include "folders.h"
#include "oracles.h"
#include "scheduler.h"
#include "seeds.h"

namespace fuzz {

namespace {

struct PidSection {
    std::uint16_t pid;
    std::vector<std::uint8_t> bytes;
};

/// The different sections of some seconds, in the order of their arrival, and the first packets with an adaptation
/// field.
struct Recording {
    std::vector<PidSection> sections;
    std::vector<std::vector<std::uint8_t>> packets;
};

Recording record(const tsmake::Multiplex& multiplex) {
    constexpr unsigned int kSeconds = 4;
    constexpr std::size_t kMostPackets = 12;
    Recording recording;
    std::set<std::vector<std::uint8_t>> known;
    broadcast::Demux demux;
    for (std::uint16_t pid = 0; pid < broadcast::kNullPid; ++pid) {
        demux.subscribe(pid, [&, pid](si::Bytes section) {
            std::vector<std::uint8_t> bytes(section.data, section.data + section.size);
            if (known.insert(bytes).second) {
                recording.sections.push_back({pid, std::move(bytes)});
            }
        });
    }
    tsmake::writeMultiplex(multiplex, kSeconds, [&](const std::uint8_t* bytes) {
        const broadcast::TsPacket packet{bytes};
        demux.feed(packet);
        if (packet.hasAdaptation() && packet.pid() != broadcast::kNullPid && recording.packets.size() < kMostPackets) {
            recording.packets.emplace_back(bytes, bytes + broadcast::kPacketSize);
        }
    });
    return recording;
}

void writeSections(SeedFiles& files, const Recording& recording) {
    std::map<std::uint8_t, unsigned int> ofTable;
    for (const PidSection& section : recording.sections) {
        constexpr unsigned int kMost = 4;
        if (++ofTable[section.bytes[0]] <= kMost) {
            files.add("si_describers", Seed().raw(section.bytes));
        }
    }
}

void addRecord(Seed& seed, const PidSection& section) {
    seed.u8(kRightSection).u16(section.pid).chunk(section.bytes);
}

void writeStreams(SeedFiles& files, const Recording& recording) {
    Seed tables;
    std::map<std::pair<std::uint16_t, std::uint8_t>, unsigned int> ofPid;
    for (const PidSection& section : recording.sections) {
        constexpr unsigned int kMost = 3;
        constexpr std::size_t kLongest = 600;
        if (section.bytes.size() <= kLongest && ++ofPid[{section.pid, section.bytes[0]}] <= kMost) {
            addRecord(tables, section);
        }
    }
    Seed packets;
    for (const std::vector<std::uint8_t>& packet : recording.packets) {
        const std::uint16_t pid = broadcast::TsPacket{packet.data()}.pid();
        packets.u8(kPacket).u16(pid).chunk(std::vector<std::uint8_t>(packet.begin() + 3, packet.end()));
    }
    files.add("transport_stream_tables", tables);
    files.add("transport_stream_tables", packets);
}

void writeCarousels(SeedFiles& files, const Recording& recording) {
    Seed inOrder;
    Seed control;
    for (const PidSection& section : recording.sections) {
        constexpr std::uint8_t kControl = 0x3B;
        constexpr std::uint8_t kData = 0x3C;
        if (section.bytes[0] == kControl) {
            control.u8(0).chunk(section.bytes);
        }
        if (section.bytes[0] == kControl || section.bytes[0] == kData) {
            inOrder.u8(0).chunk(section.bytes);
        }
    }
    files.add("carousels", inOrder);
    files.add("carousels", control);
}

/// Control messages come again, as a reader of files needs them.
void writeObjectCarousels(SeedFiles& files, const Recording& recording) {
    std::map<std::uint16_t, std::vector<const PidSection*>> byPid;
    for (const PidSection& section : recording.sections) {
        constexpr std::uint8_t kControl = 0x3B;
        constexpr std::uint8_t kData = 0x3C;
        if (section.bytes[0] == kControl || section.bytes[0] == kData) {
            byPid[section.pid].push_back(&section);
        }
    }
    for (const auto& [pid, sections] : byPid) {
        Seed seed;
        for (int round = 0; round < 2; ++round) {
            for (const PidSection* const section : sections) {
                seed.u8(0).chunk(section->bytes);
            }
        }
        files.add("object_carousels", seed);
    }
    Seed twoStreams;
    for (int round = 0; round < 2; ++round) {
        unsigned int stream = 0;
        for (const auto& each : byPid) {
            for (const PidSection* const section : each.second) {
                twoStreams.u8(stream % 2).chunk(section->bytes);
            }
            ++stream;
        }
    }
    files.add("object_carousels", twoStreams);
}

void writeAits(SeedFiles& files, const Recording& recording) {
    constexpr std::uint8_t kAit = 0x74;
    Seed all;
    all.chunk(std::string());
    unsigned int count = 0;
    for (const PidSection& section : recording.sections) {
        if (section.bytes[0] == kAit) {
            all.u8(count++ % 4).chunk(section.bytes);
        }
    }
    files.add("ait", all);
}

void writeDatagrams(SeedFiles& files, const Recording& recording) {
    Seed inOrder;
    Seed disordered;
    for (unsigned int index = 0; index < recording.packets.size(); ++index) {
        const unsigned int numbers[] = {0xFFFE + index, 0xFFFE + (index ^ 1U)};
        Seed* const seeds[] = {&inOrder, &disordered};
        for (std::size_t each = 0; each < 2; ++each) {
            constexpr unsigned int kVersion = 0x80;
            constexpr unsigned int kTransportStream = 33;
            Seed datagram;
            datagram.u8(kVersion).u8(kTransportStream).u16(numbers[each] & 0xFFFFU).raw(std::string(8, '\0'));
            datagram.raw(recording.packets[index]);
            seeds[each]->chunk(datagram.bytes);
        }
    }
    files.add("rtp", inOrder);
    files.add("rtp", disordered);
}

}  // namespace

void writeBroadcastSeeds(SeedFiles& files, const std::string& everything, const std::string& base) {
    std::string error;
    std::optional<tsmake::Multiplex> described = tsmake::parseDescription(everything, error);
    expect(described.has_value() && tsmake::readFolders(*described, base, error),
           "the description of everything: " + error);
    for (const tsmake::Multiplex& multiplex : {tsmake::sampleMultiplex(), *described}) {
        const Recording recording = record(multiplex);
        writeSections(files, recording);
        writeStreams(files, recording);
        writeCarousels(files, recording);
        writeObjectCarousels(files, recording);
        writeAits(files, recording);
        writeDatagrams(files, recording);
    }
}

}  // namespace fuzz
