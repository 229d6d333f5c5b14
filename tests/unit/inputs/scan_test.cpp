// Tests of how often a file is read to collect its tables.
#include "scan.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>

#include "packets.h"

namespace {

constexpr std::uint16_t kService = 7;
constexpr std::uint16_t kPmtPid = 256;

Bytes pat() {
    tsmake::SectionWriter writer(0x00, 1, 0);
    writer.u16(kService).u16(0xE000U | kPmtPid);
    return writer.finish();
}

Bytes pmt() {
    tsmake::SectionWriter writer(0x02, kService, 0);
    writer.u16(0xFFFF).open12().close();
    return writer.finish();
}

/// A temporary file of single sections and of packets that have none.
class AFileOfSections : public testing::Test {
protected:
    static constexpr std::uint64_t kLookAhead = 100;

    AFileOfSections() : written(fdopen(mkstemp(path), "wb")) {}
    ~AFileOfSections() override { std::remove(path); }

    void section(std::uint16_t pid, const Bytes& bytes) {
        for (const Packet& packet : PacketMaker(pid).packets({bytes})) {
            write(packet);
        }
    }
    void others(std::uint64_t count) {
        for (PacketMaker maker(3000); count > 0; --count) {
            write(maker.packet({}, false));
        }
    }
    std::unique_ptr<dtvservice::PacketFile> opened() {
        std::fclose(written);
        std::string error;
        return dtvservice::PacketFile::open(path, error);
    }

    std::uint64_t packets = 0;  // of the file

private:
    void write(const Packet& packet) {
        std::fwrite(packet.data(), 1, packet.size(), written);
        ++packets;
    }

    char path[32] = "/tmp/scan-test-XXXXXX";
    std::FILE* written;
};

}  // namespace

TEST_F(AFileOfSections, IsReadOnceBehindALookAhead) {
    section(0, pat());
    section(kPmtPid, pmt());
    others(2 * kLookAhead);
    const auto file = opened();
    const dtvservice::Scan scan(*file, kLookAhead);
    EXPECT_EQ(scan.tables().pmt(kService), pmt());
    EXPECT_EQ(scan.packets(), kLookAhead + packets);
}

TEST_F(AFileOfSections, IsReadOnceMoreForWhatIsAnnouncedLater) {
    section(kPmtPid, pmt());
    others(2 * kLookAhead);
    section(0, pat());
    const auto file = opened();
    const dtvservice::Scan scan(*file, kLookAhead);
    EXPECT_EQ(scan.tables().pmt(kService), pmt());
    EXPECT_EQ(scan.packets(), kLookAhead + 2 * packets);
}

TEST_F(AFileOfSections, HasWhatComesBeforeItsAnnouncementWithinTheLookAhead) {
    section(kPmtPid, pmt());
    section(0, pat());
    others(2 * kLookAhead);
    const auto file = opened();
    const dtvservice::Scan scan(*file, kLookAhead);
    EXPECT_EQ(scan.tables().pmt(kService), pmt());
    EXPECT_EQ(scan.packets(), kLookAhead + packets);
}

TEST_F(AFileOfSections, IsReadTwiceIfItIsShorterThanTheLookAhead) {
    section(kPmtPid, pmt());
    section(0, pat());
    const auto file = opened();
    const dtvservice::Scan scan(*file, kLookAhead);
    EXPECT_EQ(scan.tables().pmt(kService), pmt());
    EXPECT_EQ(scan.packets(), 2 * packets);
}
