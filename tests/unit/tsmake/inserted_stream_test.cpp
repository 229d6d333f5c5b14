// Elementary streams that a broadcast takes from another transport stream.
#include <gmock/gmock.h>
#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "scheduler.h"
#include "si/tables.h"
#include "stream_reader.h"
#include "tables.h"

namespace tsmake {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint16_t kVideoPid = 0x200;
constexpr std::uint16_t kNewPid = 0x101;
constexpr std::uint64_t kMillisecond = 27000;
constexpr std::uint64_t kPtsOfMillisecond = 90;

/// A packet with this payload at its end; the rest is an adaptation field, with a PCR if there is one.
TsPacketBytes packetOf(std::uint16_t pid, unsigned int counter, bool startsUnit, const Bytes& payload,
                       std::optional<std::uint64_t> pcr = std::nullopt) {
    TsPacketBytes packet;
    packet.fill(0xFF);
    const std::size_t adaptation = kTsPacketSize - 4 - payload.size();
    packet[0] = 0x47;
    packet[1] = static_cast<std::uint8_t>((startsUnit ? 0x40U : 0U) | pid >> 8U);
    packet[2] = static_cast<std::uint8_t>(pid & 0xFFU);
    packet[3] = static_cast<std::uint8_t>((adaptation != 0 ? 0x20U : 0U) | (payload.empty() ? 0U : 0x10U) | counter);
    if (adaptation != 0) {
        packet[4] = static_cast<std::uint8_t>(adaptation - 1);
    }
    if (adaptation > 1) {
        packet[5] = pcr ? 0x10 : 0x00;
    }
    for (unsigned int byte = 0; pcr && byte < 6; ++byte) {
        const std::uint64_t bits = *pcr / 300 << 15U | 0x7E00U | *pcr % 300;
        packet[6 + byte] = static_cast<std::uint8_t>(bits >> 8U * (5 - byte));
    }
    std::copy(payload.begin(), payload.end(), packet.end() - static_cast<std::ptrdiff_t>(payload.size()));
    return packet;
}

void appendTimeStamp(Bytes& bytes, unsigned int prefix, std::uint64_t value) {
    bytes.push_back(static_cast<std::uint8_t>(prefix << 4U | (value >> 29U & 0x0EU) | 1U));
    bytes.push_back(static_cast<std::uint8_t>(value >> 22U));
    bytes.push_back(static_cast<std::uint8_t>((value >> 14U & 0xFEU) | 1U));
    bytes.push_back(static_cast<std::uint8_t>(value >> 7U));
    bytes.push_back(static_cast<std::uint8_t>((value << 1U & 0xFEU) | 1U));
}

/// A PES packet with PTS and DTS, and `mark` as its only data.
Bytes pesOf(std::uint64_t pts, std::uint64_t dts, std::uint8_t mark) {
    Bytes bytes{0, 0, 1, 0xE0, 0, 0, 0x84, 0xC0, 10};
    appendTimeStamp(bytes, 3, pts);
    appendTimeStamp(bytes, 1, dts);
    bytes.push_back(mark);
    return bytes;
}

std::uint64_t timeStampAt(const Bytes& bytes, std::size_t at) {
    return (bytes[at] & 0x0EULL) << 29U | std::uint64_t{bytes[at + 1]} << 22U | (bytes[at + 2] & 0xFEULL) << 14U |
           std::uint64_t{bytes[at + 3]} << 7U | std::uint64_t{bytes[at + 4]} >> 1U;
}

/// What a broadcast has of one PID.
struct Unit {
    std::uint64_t ticks;  ///< of its first packet
    Bytes bytes;
};

class AnInsertedStream : public testing::Test {
protected:
    AnInsertedStream() {
        std::string name = (std::filesystem::temp_directory_path() / "inserted-XXXXXX").string();
        folder = mkdtemp(name.data());
        source.services.resize(1);
        source.services[0].serviceId = 7;
        source.services[0].pmtPid = 0x100;
        source.services[0].components = {{Component::Kind::video, 9, "", kVideoPid}};
        target.bitRate = 1504000;
        target.services.resize(1);
        target.services[0].serviceId = 1;
        target.services[0].components = {{Component::Kind::video, 1, ""}, {Component::Kind::audio, 2, "eng"}};
        std::string error;
        EXPECT_TRUE(assignPids(target, error)) << error;
    }
    ~AnInsertedStream() override { std::filesystem::remove_all(folder); }

    void addTables() {
        addSection(0, patSection(source));
        addSection(0x100, pmtSection(source.services[0]));
    }
    void addSection(std::uint16_t pid, const Section& section) {
        Bytes payload{0};
        payload.insert(payload.end(), section.begin(), section.end());
        packets.push_back(packetOf(pid, 0, true, payload));
    }
    /// One each 10 ms from the clock's origin on, which is a packet without payload; the last one is not whole.
    void addPictures(std::uint64_t origin, unsigned int count) {
        for (unsigned int index = 0; index <= count; ++index) {
            const std::uint64_t clock = (origin + index * 10 * kMillisecond) % kWrap;
            packets.push_back(packetOf(kVideoPid, (counter - 1) & 0x0FU, false, {}, clock));
            const std::uint64_t dts = (clock / 300 + 100 * kPtsOfMillisecond) % (kWrap / 300);
            const std::uint64_t pts = (dts + 20 * kPtsOfMillisecond) % (kWrap / 300);
            addUnit(pesOf(pts, dts, static_cast<std::uint8_t>(index)));
        }
        packets.push_back(
            packetOf(kVideoPid, (counter - 1) & 0x0FU, false, {}, (origin + (count + 1) * 10 * kMillisecond) % kWrap));
    }
    /// In packets of ten bytes, each time stamp goes over the end of one.
    void addUnit(const Bytes& pes) {
        for (std::size_t at = 0; at < pes.size(); at += payloadSize) {
            const std::size_t end = std::min(at + payloadSize, pes.size());
            packets.push_back(packetOf(
                kVideoPid, counter, at == 0,
                Bytes(pes.begin() + static_cast<std::ptrdiff_t>(at), pes.begin() + static_cast<std::ptrdiff_t>(end))));
            counter = (counter + 1) & 0x0FU;
        }
    }

    std::string file() {
        const std::string path = folder + "/source.ts";
        std::ofstream output(path, std::ios::binary);
        for (const TsPacketBytes& packet : packets) {
            output.write(reinterpret_cast<const char*>(packet.data()), kTsPacketSize);
        }
        return path;
    }
    /// Empty if the stream has been inserted.
    std::string insert(std::uint16_t pid = kVideoPid) {
        std::string error;
        const std::string path = file();
        const bool isInserted = insertStream(target, {path, pid}, error);
        EXPECT_EQ(isInserted, error.empty());
        return error.empty() ? "" : error.substr(path.size());
    }
    std::vector<Unit> unitsOf(std::uint16_t pid, unsigned int seconds) {
        std::vector<Unit> units;
        std::uint64_t number = 0;
        unsigned int next = 0;
        writeMultiplex(target, seconds, [&](const std::uint8_t* packet) {
            const std::uint64_t ticks = packetTicks(number++, target.bitRate);
            if (((packet[1] & 0x1FU) << 8U | packet[2]) != pid) {
                return;
            }
            const bool hasPayload = (packet[3] & 0x10U) != 0;
            EXPECT_EQ(packet[3] & 0x0FU, (hasPayload ? next++ : next - 1) & 0x0FU) << "continuity_counter";
            const std::size_t at = (packet[3] & 0x20U) != 0 ? 5U + packet[4] : 4U;
            clocks += (packet[3] & 0x20U) != 0 && packet[4] != 0 && (packet[5] & 0x10U) != 0 ? 1 : 0;
            if ((packet[1] & 0x40U) != 0) {
                units.push_back({ticks, {}});
            }
            if (hasPayload && !units.empty()) {
                units.back().bytes.insert(units.back().bytes.end(), packet + at, packet + kTsPacketSize);
            }
        });
        return units;
    }

    static constexpr std::uint64_t kWrap = (std::uint64_t{1} << 33U) * 300;
    std::string folder;
    Multiplex source;
    Multiplex target;
    std::vector<TsPacketBytes> packets;
    std::size_t payloadSize = 10;
    unsigned int counter = 0;
    unsigned int clocks = 0;
};

}  // namespace

TEST_F(AnInsertedStream, KeepsItsPaceWithTheClockOfTheBroadcast) {
    addTables();
    addPictures(12345 * kMillisecond, 50);
    ASSERT_EQ(insert(), "");
    const std::vector<Unit> units = unitsOf(kNewPid, 1);
    ASSERT_GE(units.size(), 50U);
    for (std::size_t index = 0; index < 50; ++index) {
        ASSERT_EQ(units[index].bytes.size(), 20U);
        EXPECT_EQ(units[index].bytes[19], index);
        EXPECT_EQ(timeStampAt(units[index].bytes, 9), (index * 10 + 120) * kPtsOfMillisecond);
        EXPECT_EQ(timeStampAt(units[index].bytes, 14), (index * 10 + 100) * kPtsOfMillisecond);
        EXPECT_GE(units[index].ticks, index * 10 * kMillisecond);
        EXPECT_LE(units[index].ticks, (index + 1) * 10 * kMillisecond);
    }
    EXPECT_GE(clocks, 40U);
}

TEST_F(AnInsertedStream, MayHaveAClockThatBeginsAnew) {
    addTables();
    addPictures(kWrap - 95 * kMillisecond, 50);
    ASSERT_EQ(insert(), "");
    const std::vector<Unit> units = unitsOf(kNewPid, 1);
    ASSERT_GE(units.size(), 50U);
    for (std::size_t index = 0; index < 50; ++index) {
        EXPECT_EQ(timeStampAt(units[index].bytes, 9), (index * 10 + 120) * kPtsOfMillisecond);
    }
}

TEST_F(AnInsertedStream, BeginsAgainAtItsEndWithLaterTimeStamps) {
    payloadSize = 20;
    addTables();
    addPictures(0, 30);
    ASSERT_EQ(insert(), "");
    const std::vector<Unit> units = unitsOf(kNewPid, 2);
    ASSERT_GE(units.size(), 90U);
    for (std::size_t index = 1; index < units.size() - 1; ++index) {
        EXPECT_EQ(units[index].bytes[19], index % 30);
        EXPECT_GT(timeStampAt(units[index].bytes, 9), timeStampAt(units[index - 1].bytes, 9));
    }
    // The last one, which is not whole, is 300 ms behind the first, and has 40 ms.
    EXPECT_EQ(timeStampAt(units[30].bytes, 9) - timeStampAt(units[0].bytes, 9), 340 * kPtsOfMillisecond);
}

TEST_F(AnInsertedStream, BeginsWithARandomAccessPointIfItMarksThem) {
    addTables();
    addPictures(0, 30);
    const auto third = std::find_if(packets.begin(), packets.end(), [seen = 0](const TsPacketBytes& packet) mutable {
        const bool isVideo = packet[1] == (0x40U | kVideoPid >> 8U) && packet[2] == 0;
        return isVideo && ++seen == 3;
    });
    ASSERT_NE(third, packets.end());
    (*third)[5] |= 0x40U;
    ASSERT_EQ(insert(), "");
    const std::vector<Unit> units = unitsOf(kNewPid, 1);
    EXPECT_EQ(units[0].bytes[19], 2);
    EXPECT_EQ(timeStampAt(units[0].bytes, 9), 140 * kPtsOfMillisecond);
}

TEST_F(AnInsertedStream, IsDescribedAsInItsPmtWithTheComponentsTag) {
    packets.clear();
    source.services[0].components[0] = {Component::Kind::subtitle, 9, "fra", kVideoPid};
    target.services[0].components[1] = {Component::Kind::subtitle, 2, "", 0x105};
    addTables();
    addPictures(0, 30);
    ASSERT_EQ(insert(), "");
    const Section section = pmtSection(target.services[0]);
    std::string error;
    const std::optional<si::Pmt> pmt = si::parsePmt(si::Bytes(section), error);
    ASSERT_TRUE(pmt) << error;
    ASSERT_EQ(pmt->streams.size(), 2U);
    EXPECT_EQ(pmt->streams[1].streamType, 6U);
    ASSERT_EQ(pmt->streams[1].descriptors.size(), 2U);
    EXPECT_THAT(pmt->streams[1].descriptors[0].bytes, testing::ElementsAre(2));
    EXPECT_EQ(pmt->streams[1].descriptors[1].tag, 0x59U);
}

TEST_F(AnInsertedStream, TakesAnotherLanguageFromTheComponent) {
    source.services[0].components[0] = {Component::Kind::audio, 9, "fra", kVideoPid};
    addTables();
    addPictures(0, 30);
    ASSERT_EQ(insert(), "");
    const Section section = pmtSection(target.services[0]);
    std::string error;
    const std::optional<si::Pmt> pmt = si::parsePmt(si::Bytes(section), error);
    ASSERT_TRUE(pmt) << error;
    ASSERT_EQ(pmt->streams[1].descriptors.size(), 2U);
    EXPECT_THAT(pmt->streams[1].descriptors[1].bytes, testing::ElementsAre('e', 'n', 'g', 0));
}

TEST_F(AnInsertedStream, EndsWhereItsClockJumps) {
    addTables();
    addPictures(0, 30);
    addPictures(60000 * kMillisecond, 30);
    ASSERT_EQ(insert(), "");
    EXPECT_EQ(unitsOf(kNewPid, 1)[30].bytes[19], 0);
    EXPECT_EQ(target.services[0].components[0].stream->packets.size(), 60U);
}

TEST_F(AnInsertedStream, LeavesOutPacketsThatRepeatOrHaveErrors) {
    addTables();
    addPictures(0, 30);
    std::vector<TsPacketBytes> twice;
    for (TsPacketBytes packet : packets) {
        twice.insert(twice.end(), {packet, packet});
        packet[1] |= 0x80U;
        twice.push_back(packet);
    }
    packets = twice;
    ASSERT_EQ(insert(), "");
    EXPECT_EQ(target.services[0].components[0].stream->packets.size(), 60U);
}

TEST_F(AnInsertedStream, IsRefusedByWhatItLacks) {
    packets.push_back(packetOf(0x300, 0, false, {1}));
    EXPECT_EQ(insert(), ":512: no PMT lists the PID");
    addTables();
    EXPECT_EQ(insert(), ":512: PID 512, the clock, has fewer than two PCRs");
    EXPECT_EQ(insert(0x300), ":768: no PMT lists the PID");
    addPictures(0, 0);
    EXPECT_EQ(insert(), ":512: the PID has no whole PES packet between the first PCR and the last");
    packets.back()[3] |= 0x80U;
    packets.push_back(packetOf(kVideoPid, counter, true, {0}));
    packets.back()[3] |= 0x80U;
    EXPECT_EQ(insert(), ":512: packet 8 is scrambled");
    packets.back()[0] = 0;
    EXPECT_EQ(insert(), ":512: packet 8 does not begin with 0x47");
}

TEST_F(AnInsertedStream, IsRefusedWithoutAComponentForIt) {
    addTables();
    addPictures(0, 30);
    EXPECT_EQ(insert(), "");
    EXPECT_EQ(insert(), ":512: no component of kind video is left for it");
    std::string error;
    target.services[0].components[1].place = StreamPlace{file(), kVideoPid};
    EXPECT_FALSE(readStreams(target, "", error));
    EXPECT_THAT(error, testing::HasSubstr(":512 is video, and the component is audio"));
}

TEST_F(AnInsertedStream, OfAFileThatIsNotThereIsRefused) {
    std::string error;
    target.services[0].components[0].place = StreamPlace{"missing.ts", kVideoPid};
    EXPECT_FALSE(readStreams(target, folder, error));
    EXPECT_EQ(error, "missing.ts:512: cannot be read");
}

TEST_F(AnInsertedStream, NeedsRoomForItsPackets) {
    addTables();
    addPictures(0, 1000);
    ASSERT_EQ(insert(), "");
    target.bitRate = 400000;
    EXPECT_THROW(unitsOf(kNewPid, 10), std::length_error);
}

TEST(APlaceOfAStream, IsAFileAndAPid) {
    std::string error;
    const std::optional<StreamPlace> place = parseStreamPlace("a:b.ts:0x1FFE", error);
    ASSERT_TRUE(place) << error;
    EXPECT_EQ(place->file, "a:b.ts");
    EXPECT_EQ(place->pid, 8190U);
    for (const char* const wrong : {"a.ts", "a.ts:", ":100", "a.ts:31", "a.ts:8191", "a.ts:1x", "a.ts:-1", "a.ts:0x"}) {
        EXPECT_FALSE(parseStreamPlace(wrong, error)) << wrong;
        EXPECT_EQ(error, "\"" + std::string(wrong) + "\" is not FILE.ts:PID with a PID from 32 to 8190");
    }
}

}  // namespace tsmake
