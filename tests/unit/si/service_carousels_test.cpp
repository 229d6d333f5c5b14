// Tests of the carousels of a service, and of a carousel's way from a folder to the reader's files.
#include "si/service_carousels.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "demux.h"
#include "made_carousels.h"
#include "scheduler.h"
#include "tables.h"

namespace {

using si::CarouselTree;
using si::ServiceCarousels;
using Kind = si::CarouselNews::Kind;

constexpr std::uint16_t kPid = 500;
constexpr std::uint16_t kBlockPid = 501;

si::Pmt pmtOf(const tsmake::Service& service) {
    std::string error;
    const std::optional<si::Pmt> pmt = si::parsePmt(tsmake::pmtSection(service), error);
    EXPECT_TRUE(pmt) << error;
    return *pmt;
}

tsmake::Service serviceWith(const tsmake::Carousel& carousel) {
    tsmake::Service service;
    service.serviceId = 10;
    service.pmtPid = 100;
    service.carousels = {carousel};
    service.carousels[0].pid = kPid;
    service.carousels[0].blockPid = kBlockPid;
    return service;
}

std::vector<std::string> warningsOf(const std::vector<ServiceCarousels::News>& news) {
    std::vector<std::string> warnings;
    for (const ServiceCarousels::News& each : news) {
        if (each.news.kind == Kind::warning) {
            warnings.push_back(std::to_string(each.pid) + ": " + each.news.text);
        }
    }
    return warnings;
}

Files smallFolder() {
    return {{"a", someBytes(1, 2000)}, {"b", someBytes(2, 2000)}};
}

tsmake::Carousel onTwoStreams() {
    tsmake::Carousel carousel = carouselOf({smallFolder()});
    carousel.blockTag = 33;
    return carousel;
}

/// Control messages and blocks, each on its stream.
void play(ServiceCarousels& carousels, const tsmake::Carousel& made, std::uint16_t blockPid) {
    const tsmake::CarouselState state = tsmake::carouselStates(made).at(0);
    for (int round = 0; round < 2; ++round) {
        for (const tsmake::Section& section : cycleOf(state)) {
            carousels.onSection(section[0] == si::kDownloadDataTableId ? blockPid : kPid, section);
        }
    }
}

}  // namespace

TEST(TheCarouselsOfAService, AreReadFromTheirStreams) {
    ServiceCarousels carousels;
    EXPECT_THAT(warningsOf(carousels.setPmt(pmtOf(serviceWith(carouselOf({smallFolder()}))))), testing::IsEmpty());
    EXPECT_THAT(carousels.pids(), testing::ElementsAre(kPid));
    play(carousels, carouselOf({smallFolder()}), kPid);
    EXPECT_EQ(differenceOf(filesIn(*carousels.carousels().at(kPid).tree()), smallFolder()), "");
}

TEST(TheCarouselsOfAService, MayHaveTheirBlocksOnAnotherStream) {
    ServiceCarousels carousels;
    carousels.setPmt(pmtOf(serviceWith(onTwoStreams())));
    EXPECT_THAT(carousels.pids(), testing::ElementsAre(kPid, kBlockPid));
    play(carousels, onTwoStreams(), kBlockPid);
    EXPECT_EQ(differenceOf(filesIn(*carousels.carousels().at(kPid).tree()), smallFolder()), "");
    EXPECT_FALSE(carousels.carousels().at(kBlockPid).carouselId()) << "no carousel begins there";
}

TEST(TheCarouselsOfAService, MayHaveTheirBlocksInAnotherService) {
    si::Pmt pmt = pmtOf(serviceWith(onTwoStreams()));
    const si::Pmt::Stream blocks = pmt.streams.back();
    pmt.streams.pop_back();
    // A deferred_association_tags_descriptor: association tag 33 is in service 20 of transport stream 1.
    pmt.descriptors.push_back({0x15, {2, 0, 33, 0, 1, 0, 20}});
    si::Pmt other;
    other.serviceId = 20;
    other.streams = {blocks};
    ServiceCarousels carousels;
    carousels.setPmt(pmt);
    EXPECT_THAT(carousels.otherServices(), testing::IsEmpty()) << "no message has named the stream";
    play(carousels, onTwoStreams(), kBlockPid);
    EXPECT_THAT(carousels.otherServices(), testing::ElementsAre(20));
    EXPECT_THAT(carousels.pids(), testing::ElementsAre(kPid));
    carousels.setOtherPmt(other);
    EXPECT_THAT(carousels.otherServices(), testing::IsEmpty());
    EXPECT_THAT(carousels.pids(), testing::ElementsAre(kPid, kBlockPid));
    play(carousels, onTwoStreams(), kBlockPid);
    EXPECT_EQ(differenceOf(filesIn(*carousels.carousels().at(kPid).tree()), smallFolder()), "");
}

TEST(TheCarouselsOfAService, AreReadWithoutDescriptorsButWithWarnings) {
    si::Pmt pmt = pmtOf(serviceWith(carouselOf({smallFolder()})));
    pmt.streams[0].descriptors.clear();
    ServiceCarousels carousels;
    EXPECT_THAT(warningsOf(carousels.setPmt(pmt)),
                testing::ElementsAre("500: the PMT has no carousel_identifier_descriptor",
                                     "500: the PMT has no data_broadcast_id_descriptor"));
    EXPECT_THAT(warningsOf(carousels.setPmt(pmt)), testing::IsEmpty()) << "told once";
    play(carousels, carouselOf({smallFolder()}), kPid);
    EXPECT_EQ(differenceOf(filesIn(*carousels.carousels().at(kPid).tree()), smallFolder()), "");
}

TEST(TheCarouselsOfAService, GoOnWhenThePmtChanges) {
    const tsmake::Service service = serviceWith(carouselOf({smallFolder()}));
    ServiceCarousels carousels;
    carousels.setPmt(pmtOf(service));
    play(carousels, service.carousels[0], kPid);
    const std::shared_ptr<const CarouselTree> tree = carousels.carousels().at(kPid).tree();
    carousels.setPmt(pmtOf(service));
    EXPECT_EQ(carousels.carousels().at(kPid).tree(), tree);
    carousels.setPmt({});
    EXPECT_THAT(carousels.pids(), testing::IsEmpty());
    EXPECT_EQ(differenceOf(filesIn(*tree), smallFolder()), "");
}

// ------------------------------------------------------------------------------------------------------ round trip

namespace {

constexpr std::uint32_t kFiles = 1000;
constexpr std::size_t kMegabyte = 1000000;

/// In ten folders. Every tenth file changes with the version, one goes and one comes.
Files folderOf(std::uint32_t version, std::size_t size) {
    Files files;
    for (std::uint32_t index = 0; index < kFiles; ++index) {
        const bool changes = index % 10 == 0;
        files["folder" + std::to_string(index % 10) + "/file" + std::to_string(index)] =
            someBytes(index + (changes ? version * kFiles : 0), size / kFiles);
    }
    files.erase("folder1/file" + std::to_string(1 + 10 * version));
    files["new" + std::to_string(version)] = std::to_string(version);
    return files;
}

tsmake::Multiplex multiplexOf(const tsmake::Carousel& carousel) {
    tsmake::Multiplex multiplex;
    multiplex.bitRate = carousel.bitRate + 1000000;
    multiplex.services = {serviceWith(carousel)};
    return multiplex;
}

/// Carries the PMT and the sections from packets to the reader.
class Receiver {
public:
    explicit Receiver(const tsmake::Service& service) {
        demux.subscribe(service.pmtPid, [this](si::Bytes section) {
            std::string error;
            if (const std::optional<si::Pmt> pmt = si::parsePmt(section, error)) {
                carousels.setPmt(*pmt);
                subscribe();
            }
        });
    }

    void feed(const std::uint8_t* packet) { demux.feed(broadcast::TsPacket{packet}); }
    /// Null before the PMT.
    std::shared_ptr<const CarouselTree> tree() {
        const auto carousel = carousels.carousels().find(kPid);
        return carousel == carousels.carousels().end() ? nullptr : carousel->second.tree();
    }
    bool isComplete() {
        const auto now = tree();
        return now && now->isComplete();
    }

private:
    void subscribe() {
        for (const std::uint16_t pid : carousels.pids()) {
            if (subscribed.insert(pid).second) {
                demux.subscribe(pid, [this, pid](si::Bytes section) { carousels.onSection(pid, section); });
            }
        }
    }

    broadcast::Demux demux;
    std::set<std::uint16_t> subscribed;
    ServiceCarousels carousels;
};

}  // namespace

TEST(ACarouselOnItsWay, ArrivesByteForByteInEachVersionAndNeverMixed) {
    std::vector<Files> versions;
    tsmake::Carousel carousel;
    carousel.id = 7;
    carousel.tag = 32;
    carousel.bitRate = 80000000;
    carousel.moduleSize = 150000;  // 134 modules, so two lists
    for (std::uint32_t version = 0; version < 3; ++version) {
        versions.push_back(folderOf(version, 20 * kMegabyte));
        carousel.versions.push_back({version * 2, "", versions.back()});
    }
    const tsmake::Multiplex multiplex = multiplexOf(carousel);
    Receiver receiver(multiplex.services[0]);
    std::shared_ptr<const CarouselTree> last;
    std::size_t seen = 0;
    tsmake::writeMultiplex(multiplex, 6, [&](const std::uint8_t* packet) {
        receiver.feed(packet);
        if (receiver.isComplete() && receiver.tree() != last) {
            last = receiver.tree();
            ASSERT_LT(seen, versions.size());
            EXPECT_EQ(differenceOf(filesIn(*last), versions[seen]), "") << seen;
            ++seen;
        }
    });
    EXPECT_EQ(seen, versions.size());
}

TEST(ACarouselOnItsWay, IsCompleteAfterThreeCyclesWithoutAHundredthOfItsPackets) {
    // A block fits into one packet: a lost packet then costs one block. A list takes several packets, and what comes
    // before the first whole list is lost, so a cycle has many of them.
    tsmake::Carousel carousel;
    carousel.id = 7;
    carousel.tag = 32;
    carousel.bitRate = 4000000;
    carousel.blockSize = 150;
    const Files files = folderOf(0, 2 * kMegabyte);
    carousel.versions = {{0, "", files}};
    const tsmake::Multiplex multiplex = multiplexOf(carousel);
    broadcast::Demux lossless;
    unsigned int cycles = 0;
    lossless.subscribe(kPid, [&cycles](si::Bytes section) {
        const std::optional<si::DownloadBlock> block = si::downloadBlock(section);
        cycles += block && block->moduleId == 1 && block->number == 0 ? 1 : 0;
    });
    Receiver receiver(multiplex.services[0]);
    std::mt19937 random(1);  // the same losses in every run
    std::optional<unsigned int> cyclesNeeded;
    tsmake::writeMultiplex(multiplex, 12, [&](const std::uint8_t* packet) {
        lossless.feed(broadcast::TsPacket{packet});
        if (random() % 100 != 0) {
            receiver.feed(packet);
        }
        if (!cyclesNeeded && receiver.isComplete()) {
            cyclesNeeded = cycles;
            EXPECT_EQ(differenceOf(filesIn(*receiver.tree()), files), "");
        }
    });
    ASSERT_GT(cycles, 3U) << "the broadcast has to be longer";
    EXPECT_LE(cyclesNeeded.value_or(99), 3U);
}

TEST(ACarouselOnItsWay, TakesOneCycleWhereverItIsJoinedAndLessForAFileThatComesSooner) {
    tsmake::Carousel carousel;
    carousel.id = 7;
    carousel.tag = 32;
    carousel.bitRate = 1000000;
    carousel.versions = {{0, "", folderOf(0, 2 * kMegabyte)}};
    const tsmake::Multiplex multiplex = multiplexOf(carousel);
    std::vector<std::string> packets;
    std::vector<std::size_t> cycles;  // the packets with which they begin
    broadcast::Demux marks;
    marks.subscribe(kPid, [&](si::Bytes section) {
        const std::optional<si::DownloadBlock> block = si::downloadBlock(section);
        if (block && block->moduleId == 1 && block->number == 0) {
            cycles.push_back(packets.size());
        }
    });
    tsmake::writeMultiplex(multiplex, 25, [&](const std::uint8_t* packet) {
        packets.emplace_back(reinterpret_cast<const char*>(packet), broadcast::kPacketSize);
        marks.feed(broadcast::TsPacket{packet});
    });
    ASSERT_GE(cycles.size(), 3U);
    const std::size_t cycle = cycles[2] - cycles[1];
    for (const std::size_t tenth : {0U, 3U, 5U, 8U}) {
        Receiver receiver(multiplex.services[0]);
        const std::size_t begin = cycles[0] + cycle * tenth / 10;
        std::optional<std::size_t> first;
        std::size_t at = begin;
        for (; at < packets.size() && !receiver.isComplete(); ++at) {
            receiver.feed(reinterpret_cast<const std::uint8_t*>(packets[at].data()));
            const auto tree = receiver.tree();
            if (!first && tree && tree->find("folder0/file0").state == CarouselTree::State::here) {
                first = at - begin;
            }
        }
        EXPECT_LE(at - begin, cycle + cycle / 20) << tenth;
        // The directories and the file are in the first two modules.
        EXPECT_LE(first.value_or(2 * cycle), cycle - cycle * tenth / 10 + cycle / 10) << tenth;
    }
}
