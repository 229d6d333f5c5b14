// Tests of the tables that a multiplex's database stores and of the changes that it reports.
#include "si_database.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "demux.h"
#include "packets.h"
#include "scheduler.h"
#include "tables.h"

namespace {

/// Records the reported changes as text.
class KeepingListener : public broadcast::SiListener {
public:
    std::vector<std::string> told;

    void onChannelList(const broadcast::SiDatabase&) override { told.emplace_back("list"); }
    void onPmt(const broadcast::SiDatabase&, std::uint16_t serviceId, const broadcast::Section&,
               bool changed) override {
        tell("pmt", serviceId, changed);
    }
    void onEit(const broadcast::SiDatabase&, std::uint16_t serviceId, const broadcast::Section&,
               bool changed) override {
        tell("eit", serviceId, changed);
    }
    void onAit(const broadcast::SiDatabase&, std::uint16_t serviceId, const broadcast::Section&,
               bool changed) override {
        tell("ait", serviceId, changed);
    }
    void onAitSignalled(const broadcast::SiDatabase&, std::uint16_t serviceId, bool signalled) override {
        tell(signalled ? "hbbtv" : "no hbbtv", serviceId, false);
    }

private:
    void tell(const char* what, std::uint16_t serviceId, bool changed) {
        told.push_back(std::string(what) + " " + std::to_string(serviceId) + (changed ? " changed" : ""));
    }
};

class ADatabase : public testing::Test {
protected:
    void play(const tsmake::Multiplex& multiplex, unsigned int seconds = 1) {
        demux.discontinuity();
        tsmake::writeMultiplex(multiplex, seconds,
                               [this](const std::uint8_t* packet) { demux.feed(broadcast::TsPacket{packet}); });
    }
    void send(std::uint16_t pid, const tsmake::Section& section) {
        PacketMaker maker(pid);
        demux.discontinuity();
        for (const Packet& packet : maker.packets({section})) {
            demux.feed(broadcast::TsPacket{packet.data()});
        }
    }
    /// The section with another version_number.
    static tsmake::Section versioned(tsmake::Section section, unsigned int version) {
        section[5] = static_cast<std::uint8_t>((section[5] & 0xC1U) | version << 1U);
        return withCrc(std::move(section));
    }

    /// A PMT that signals an HbbTV AIT on each of the PIDs.
    static tsmake::Section pmtWithAits(std::uint16_t serviceId, const std::vector<std::uint16_t>& pids) {
        tsmake::SectionWriter writer(0x02, serviceId, 0);
        writer.u16(0xFFFF).open12().close();
        for (const std::uint16_t pid : pids) {
            writer.u8(0x05).u16(0xE000U | pid).open12().openDescriptor(0x6F).u16(0x8010).u8(0xE1).close().close();
        }
        return writer.finish();
    }

    struct Part {
        unsigned int version = 0;
        unsigned int number = 0;
        unsigned int last = 0;
    };
    static tsmake::SectionWriter table(std::uint8_t tableId, std::uint16_t extension, Part part) {
        return {tableId, extension, static_cast<std::uint8_t>(part.version), static_cast<std::uint8_t>(part.number),
                static_cast<std::uint8_t>(part.last)};
    }
    /// An SDT of network 1 with consecutive services. Each has its number as its name.
    static tsmake::Section sdt(std::uint8_t tableId, std::uint16_t stream, Part part, unsigned int firstService,
                               unsigned int services) {
        tsmake::SectionWriter writer = table(tableId, stream, part);
        writer.u16(1).u8(0xFF);
        for (unsigned int id = firstService; id < firstService + services; ++id) {
            writer.u16(id).u8(0xFC).open12();
            writer.openDescriptor(0x48).u8(1).lengthText("").lengthText(std::to_string(id)).close().close();
        }
        return writer.finish();
    }
    /// A NIT of network 1 with consecutive transport streams. Each has its number as delivery system, and service 7.
    static tsmake::Section nit(Part part, unsigned int firstStream, unsigned int streams) {
        tsmake::SectionWriter writer = table(0x40, 1, part);
        writer.open12().close().open12();
        for (unsigned int stream = firstStream; stream < firstStream + streams; ++stream) {
            writer.u16(stream).u16(1).open12().openDescriptor(0x44).u16(stream).close();
            writer.openDescriptor(0x41).u16(7).u8(1).close().close();
        }
        return writer.close().finish();
    }
    /// A PAT of the sample's transport stream with consecutive services, all with their PMTs on one PID.
    static tsmake::Section pat(Part part, unsigned int firstService, unsigned int services) {
        tsmake::SectionWriter writer = table(0x00, 1025, part);
        for (unsigned int id = firstService; id < firstService + services; ++id) {
            writer.u16(id).u16(0xE000U | kSharedPid);
        }
        return writer.finish();
    }
    bool hasDelivery(unsigned int stream) const {
        broadcast::Channel channel;
        channel.transportStreamId = static_cast<std::uint16_t>(stream);
        return database.hasDeliverySystem(
            channel, {'\x44', '\x02', static_cast<char>(stream >> 8U), static_cast<char>(stream & 0xFFU)});
    }
    std::vector<std::string> others() const {
        std::vector<std::string> list;
        for (const broadcast::Channel& channel : database.otherChannels()) {
            list.push_back(channel.triplet() + " " + channel.name);
        }
        return list;
    }

    static constexpr std::uint16_t kSharedPid = 0x100;
    tsmake::Multiplex sample = tsmake::sampleMultiplex();
    broadcast::Demux demux;
    KeepingListener listener;
    broadcast::SiDatabase database{demux, listener};
};

}  // namespace

TEST_F(ADatabase, ListsTheServicesOfTheBroadcastInItsOrder) {
    play(sample);
    std::vector<std::string> list;
    for (const broadcast::Channel& channel : database.channels()) {
        list.push_back(channel.triplet() + " " + channel.name);
    }
    EXPECT_THAT(list, testing::ElementsAre("1:1025:28106 Velmora One HD", "1:1025:28107 Velmora Zwei Föhn",
                                           "1:1025:28108 Velmora Τρία", "1:1025:28120 Velmora Radio"));
}

TEST_F(ADatabase, KeepsTheSectionsAsTheyWereBroadcast) {
    play(sample);
    const tsmake::Service& service = sample.services[0];
    EXPECT_EQ(database.pmt(28106), tsmake::pmtSection(service));
    EXPECT_THAT(database.eit(28106), testing::ElementsAre(tsmake::eitSection(sample, service, false),
                                                          tsmake::eitSection(sample, service, true)));
    EXPECT_THAT(database.ait(28106), testing::ElementsAre(tsmake::aitSection(service)));
    EXPECT_TRUE(database.signalsHbbTv(28106));
    EXPECT_FALSE(database.signalsHbbTv(28108));
    EXPECT_TRUE(database.ait(28108).empty());
    EXPECT_TRUE(database.pmt(1).empty());
}

TEST_F(ADatabase, HasTheFieldsOfTheLatestPmt) {
    const tsmake::Service& service = sample.services[0];
    send(0, tsmake::patSection(sample));
    EXPECT_EQ(database.pmtFields(28106), nullptr);
    EXPECT_EQ(database.pmtFields(1), nullptr);
    const auto sendPmt = [&](const std::vector<std::uint16_t>& aitPids, unsigned int version) {
        send(service.pmtPid, versioned(pmtWithAits(28106, aitPids), version));
        return database.pmtFields(28106);
    };
    const si::Pmt* const first = sendPmt({0x200}, 1);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->streams.size(), 1U);
    const si::Pmt* const second = sendPmt({0x200, 0x201}, 2);
    ASSERT_NE(second, nullptr);
    ASSERT_EQ(second->streams.size(), 2U);
    EXPECT_EQ(second->streams[1].pid, 0x201);
}

TEST_F(ADatabase, HasTheFieldsOfAPmtWithTheAddedApplication) {
    const broadcast::AddedApplication added{si::Ait::Application()};
    broadcast::SiDatabase other{demux, listener, &added};
    send(0, tsmake::patSection(sample));
    send(sample.services[0].pmtPid, pmtWithAits(28106, {}));
    ASSERT_NE(other.pmtFields(28106), nullptr);
    EXPECT_EQ(other.pmtFields(28106)->streams.size(), 1U);
    EXPECT_TRUE(database.pmtFields(28106)->streams.empty());
}

TEST_F(ADatabase, TellsOfEverySectionOnce) {
    play(sample, 3);
    for (const char* const told : {"pmt 28106", "ait 28106", "ait 28107", "pmt 28120"}) {
        EXPECT_EQ(std::count(listener.told.begin(), listener.told.end(), told), 1) << told;
    }
    EXPECT_EQ(std::count(listener.told.begin(), listener.told.end(), "eit 28106"), 2);
    const std::size_t before = listener.told.size();
    play(sample, 2);
    EXPECT_EQ(listener.told.size(), before);
}

TEST_F(ADatabase, TellsANewVersionFromTheFirst) {
    play(sample);
    listener.told.clear();
    const tsmake::Service& service = sample.services[0];
    send(service.ait.pid, versioned(tsmake::aitSection(service), 2));
    send(service.pmtPid, versioned(tsmake::pmtSection(service), 1));
    send(0x12, versioned(tsmake::eitSection(sample, service, true), 1));
    EXPECT_THAT(listener.told, testing::ElementsAre("ait 28106 changed", "pmt 28106 changed", "eit 28106 changed"));
}

TEST_F(ADatabase, ForgetsTheSectionsOfAnOldVersion) {
    play(sample);
    const tsmake::Service& service = sample.services[0];
    tsmake::Section half = tsmake::aitSection(service);
    half[7] = 1;
    send(service.ait.pid, versioned(half, 2));
    half[6] = 1;
    send(service.ait.pid, versioned(half, 2));
    EXPECT_EQ(database.ait(28106).size(), 2U);
    send(service.ait.pid, versioned(tsmake::aitSection(service), 3));
    EXPECT_EQ(database.ait(28106).size(), 1U);
}

TEST_F(ADatabase, TellsEitSectionsOfDifferentVersionsOnce) {
    send(0, tsmake::patSection(sample));
    const tsmake::Section present = versioned(tsmake::eitSection(sample, sample.services[0], false), 3);
    const tsmake::Section following = versioned(tsmake::eitSection(sample, sample.services[0], true), 5);
    send(0x12, present);
    send(0x12, following);
    EXPECT_THAT(listener.told, testing::IsSupersetOf({"eit 28106", "eit 28106"}));
    listener.told.clear();
    for (int repetition = 0; repetition < 3; ++repetition) {
        send(0x12, present);
        send(0x12, following);
    }
    EXPECT_THAT(listener.told, testing::IsEmpty());
    EXPECT_THAT(database.eit(28106), testing::ElementsAre(present, following));
    send(0x12, versioned(following, 6));
    send(0x12, present);
    EXPECT_THAT(listener.told, testing::ElementsAre("eit 28106 changed"));
    EXPECT_THAT(database.eit(28106), testing::ElementsAre(present, versioned(following, 6)));
}

TEST_F(ADatabase, TellsAnEitSectionThatGoesBackToAnEarlierVersion) {
    send(0, tsmake::patSection(sample));
    const tsmake::Section present = tsmake::eitSection(sample, sample.services[0], false);
    send(0x12, present);
    send(0x12, versioned(present, 1));
    listener.told.clear();
    send(0x12, present);
    EXPECT_THAT(listener.told, testing::ElementsAre("eit 28106 changed"));
}

TEST_F(ADatabase, ForgetsEitSectionsAboveTheLastNumber) {
    play(sample);
    tsmake::Section only = tsmake::eitSection(sample, sample.services[0], false);
    only[7] = 0;
    send(0x12, versioned(only, 1));
    EXPECT_THAT(database.eit(28106), testing::ElementsAre(versioned(only, 1)));
}

TEST_F(ADatabase, TellsEitSectionsAboveTheLastNumberOnce) {
    send(0, tsmake::patSection(sample));
    tsmake::Section section = tsmake::eitSection(sample, sample.services[0], true);
    section[7] = 0;
    send(0x12, withCrc(section));
    listener.told.clear();
    send(0x12, withCrc(section));
    EXPECT_THAT(listener.told, testing::IsEmpty());
}

TEST_F(ADatabase, PassesOverSectionsThatAreNotValidYet) {
    play(sample);
    listener.told.clear();
    tsmake::Section next = tsmake::aitSection(sample.services[0]);
    next[5] &= 0xFE;
    send(sample.services[0].ait.pid, versioned(next, 9));
    EXPECT_TRUE(listener.told.empty());
}

TEST_F(ADatabase, IgnoresAnAitOfAnotherType) {
    play(sample);
    listener.told.clear();
    tsmake::Section other = tsmake::aitSection(sample.services[0]);
    other[4] = 0x01;
    send(sample.services[0].ait.pid, versioned(other, 9));
    EXPECT_TRUE(listener.told.empty());
}

TEST_F(ADatabase, TellsEachOfTheAitsOfAServiceOnce) {
    constexpr std::uint16_t kFirstPid = 0x301;
    constexpr std::uint16_t kSecondPid = 0x302;
    send(0, tsmake::patSection(sample));
    send(sample.services[0].pmtPid, pmtWithAits(28106, {kSecondPid, kFirstPid}));
    const tsmake::Section first = versioned(tsmake::aitSection(sample.services[0]), 4);
    const tsmake::Section second = versioned(tsmake::aitSection(sample.services[0]), 7);
    listener.told.clear();
    for (int repetition = 0; repetition < 3; ++repetition) {
        send(kSecondPid, second);
        send(kFirstPid, first);
    }
    EXPECT_THAT(listener.told, testing::ElementsAre("ait 28106", "ait 28106"));
    EXPECT_THAT(database.ait(28106), testing::ElementsAre(first, second));
    send(kSecondPid, versioned(second, 8));
    EXPECT_EQ(listener.told.back(), "ait 28106 changed");
    EXPECT_THAT(database.ait(28106), testing::ElementsAre(first, versioned(second, 8)));
}

TEST_F(ADatabase, FollowsAnAitWhoseTypeIsNotListed) {
    tsmake::Service& service = sample.services[0];
    service.ait.emptySignalling = true;
    send(0, tsmake::patSection(sample));
    send(service.pmtPid, tsmake::pmtSection(service));
    EXPECT_FALSE(database.signalsHbbTv(28106)) << "only the AIT can tell";
    listener.told.clear();
    send(service.ait.pid, tsmake::aitSection(service));
    send(service.ait.pid, tsmake::aitSection(service));
    EXPECT_THAT(listener.told, testing::ElementsAre("hbbtv 28106", "ait 28106"));
    EXPECT_TRUE(database.signalsHbbTv(28106));
    EXPECT_THAT(database.ait(28106), testing::ElementsAre(tsmake::aitSection(service)));
    send(service.pmtPid, tsmake::pmtSection(service, true));
    EXPECT_FALSE(database.signalsHbbTv(28106));
    EXPECT_THAT(listener.told, testing::Contains("no hbbtv 28106"));
}

TEST_F(ADatabase, IgnoresAnUnlistedAitOfAnotherType) {
    tsmake::Service& service = sample.services[0];
    service.ait.emptySignalling = true;
    send(0, tsmake::patSection(sample));
    send(service.pmtPid, tsmake::pmtSection(service));
    tsmake::Section other = tsmake::aitSection(service);
    other[4] = 0x01;
    send(service.ait.pid, withCrc(other));
    EXPECT_FALSE(database.signalsHbbTv(28106));
    EXPECT_TRUE(database.ait(28106).empty());
}

TEST_F(ADatabase, PassesOverAnAitOfTestApplications) {
    play(sample);
    listener.told.clear();
    const tsmake::Section ordinary = tsmake::aitSection(sample.services[0]);
    tsmake::Section test = ordinary;
    test[3] |= 0x80U;
    send(sample.services[0].ait.pid, versioned(test, 9));
    send(sample.services[0].ait.pid, ordinary);
    EXPECT_TRUE(listener.told.empty());
    EXPECT_THAT(database.ait(28106), testing::ElementsAre(ordinary));
}

TEST_F(ADatabase, FollowsServicesThatGoAndComeBack) {
    play(sample);
    tsmake::Multiplex fewer = sample;
    fewer.services.erase(fewer.services.begin());
    send(0, versioned(tsmake::patSection(fewer), 1));
    EXPECT_EQ(database.find(28106), nullptr);
    EXPECT_TRUE(database.pmt(28106).empty());
    EXPECT_EQ(database.channels().size(), 3U);
    send(0, versioned(tsmake::patSection(sample), 2));
    listener.told.clear();
    play(sample);
    EXPECT_THAT(listener.told, testing::Contains("pmt 28106"));
    EXPECT_EQ(database.find(28106)->name, "Velmora One HD");
}

TEST_F(ADatabase, NamesServicesWhoseSdtCameBeforeThePat) {
    send(0x11, tsmake::sdtSection(sample));
    send(0, tsmake::patSection(sample));
    EXPECT_EQ(database.channels().at(0).name, "Velmora One HD");
    EXPECT_EQ(database.channels().at(0).triplet(), "1:1025:28106");
}

TEST_F(ADatabase, LearnsTheNetworkFromTheEitWithoutSdt) {
    send(0, tsmake::patSection(sample));
    EXPECT_EQ(database.channels().at(0).triplet(), "65535:1025:28106");
    send(0x12, tsmake::eitSection(sample, sample.services[0], false));
    EXPECT_EQ(database.channels().at(0).triplet(), "1:1025:28106");
}

TEST_F(ADatabase, IsIdentifiedByItsNetworkOrARepeatedPat) {
    constexpr int kRepetitions = 25;
    send(0, tsmake::patSection(sample));
    for (int count = 0; count < kRepetitions; ++count) {
        EXPECT_FALSE(database.isIdentified());
        EXPECT_THAT(listener.told, testing::ElementsAre("list"));
        send(0, tsmake::patSection(sample));
    }
    EXPECT_TRUE(database.isIdentified()) << "as far as it will be";
    EXPECT_THAT(listener.told, testing::ElementsAre("list", "list"));
    send(0, tsmake::patSection(sample));
    EXPECT_EQ(listener.told.size(), 2U);
}

TEST_F(ADatabase, IsIdentifiedAsSoonAsItsNetworkIsKnown) {
    send(0, tsmake::patSection(sample));
    EXPECT_FALSE(database.isIdentified());
    send(0x11, tsmake::sdtSection(sample));
    EXPECT_TRUE(database.isIdentified());
}

TEST_F(ADatabase, ForgetsTheNamesThatANewSdtDoesNotHave) {
    send(0, tsmake::patSection(sample));
    send(0x11, tsmake::sdtSection(sample));
    send(0x11, sdt(0x42, 1025, {1, 0, 0}, 28107, 1));
    EXPECT_EQ(database.find(28106)->name, "");
    EXPECT_EQ(database.find(28107)->name, "28107");
    send(0x11, sdt(0x46, 5, {0, 0, 0}, 1, 2));
    EXPECT_THAT(others(), testing::ElementsAre("1:5:1 1", "1:5:2 2"));
    send(0x11, sdt(0x46, 5, {1, 0, 0}, 2, 1));
    EXPECT_THAT(others(), testing::ElementsAre("1:5:2 2"));
}

TEST_F(ADatabase, KeepsNamesUntilTheNewSdtIsComplete) {
    send(0, tsmake::patSection(sample));
    send(0x11, tsmake::sdtSection(sample));
    send(0x11, sdt(0x42, 1025, {1, 1, 1}, 28107, 1));
    EXPECT_EQ(database.find(28107)->name, "28107");
    EXPECT_EQ(database.find(28106)->name, "Velmora One HD");
    EXPECT_EQ(database.find(28108)->name, "Velmora Τρία");
    send(0x11, sdt(0x42, 1025, {1, 0, 1}, 28106, 1));
    EXPECT_EQ(database.find(28106)->name, "28106");
    EXPECT_EQ(database.find(28107)->name, "28107");
    EXPECT_EQ(database.find(28108)->name, "");
}

TEST_F(ADatabase, ForgetsTheStreamsThatANewNitDoesNotHave) {
    send(0x10, nit({0, 0, 0}, 1, 2));
    EXPECT_TRUE(hasDelivery(1));
    EXPECT_TRUE(hasDelivery(2));
    EXPECT_THAT(others(), testing::ElementsAre("1:1:7 ", "1:2:7 "));
    send(0x11, sdt(0x46, 1, {0, 0, 0}, 9, 1));
    send(0x10, nit({1, 0, 1}, 2, 1));
    EXPECT_TRUE(hasDelivery(1)) << "half of the new one says nothing of it";
    send(0x10, nit({1, 1, 1}, 3, 1));
    EXPECT_FALSE(hasDelivery(1));
    EXPECT_TRUE(hasDelivery(2));
    EXPECT_TRUE(hasDelivery(3));
    EXPECT_THAT(others(), testing::ElementsAre("1:1:9 9", "1:2:7 ", "1:3:7 ")) << "what the SDT says stays";
}

TEST_F(ADatabase, LimitsStreamsAndServices) {
    constexpr unsigned int kMost = 1000;
    constexpr unsigned int kServices = 40;
    constexpr unsigned int kSections = 32;
    for (unsigned int number = 0; number < kSections; ++number) {
        send(0x11, sdt(0x46, 5, {0, number, kSections - 1}, number * kServices, kServices));
    }
    EXPECT_EQ(others().size(), kMost);
    send(0x11, sdt(0x46, 5, {1, 0, 0}, 1, 1));
    EXPECT_EQ(others().size(), 1U);
    for (unsigned int stream = 10; stream < kMost + 100; ++stream) {
        send(0x11, sdt(0x46, static_cast<std::uint16_t>(stream), {0, 0, 0}, 1, 1));
    }
    EXPECT_EQ(others().size(), kMost);
}

TEST_F(ADatabase, NamesItsServicesAmongTooManyStreams) {
    constexpr unsigned int kMany = 2000;
    for (unsigned int stream = 2000; stream < 2000 + kMany; ++stream) {
        send(0x11, sdt(0x42, static_cast<std::uint16_t>(stream), {0, 0, 0}, 1, 1));
    }
    send(0, tsmake::patSection(sample));
    send(0x11, tsmake::sdtSection(sample));
    EXPECT_EQ(database.channels().at(0).triplet(), "1:1025:28106");
    EXPECT_EQ(database.channels().at(0).name, "Velmora One HD");
}

TEST_F(ADatabase, FollowsServicesUpToALimit) {
    // With time that grows with the square of their number, this would take minutes.
    constexpr unsigned int kSections = 256;
    constexpr unsigned int kEach = 250;
    constexpr unsigned int kVersions = 20;
    for (unsigned int version = 0; version < kVersions; ++version) {
        for (unsigned int number = 0; number < kSections; ++number) {
            send(0, pat({version, number, kSections - 1}, 1 + number * kEach, kEach));
        }
    }
    EXPECT_EQ(database.channels().size(), broadcast::kMostServices);
    EXPECT_EQ(database.passedOver(), std::size_t{kSections} * kEach - broadcast::kMostServices);
    EXPECT_EQ(database.channels().back().serviceId, 1000U);
    EXPECT_NE(database.find(1000), nullptr);
    EXPECT_EQ(database.find(1001), nullptr);
    send(0, pat({kVersions, 0, 0}, 1001, 1));
    EXPECT_EQ(database.find(1000), nullptr);
    EXPECT_NE(database.find(1001), nullptr);
    EXPECT_EQ(database.passedOver(), 0U);
}

TEST_F(ADatabase, FindsPmtsThatShareAPid) {
    send(0, pat({0, 0, 0}, 1, 3));
    listener.told.clear();
    for (const std::uint16_t service : {std::uint16_t{3}, std::uint16_t{1}, std::uint16_t{4}}) {
        send(kSharedPid, pmtWithAits(service, {}));
    }
    EXPECT_THAT(listener.told, testing::ElementsAre("pmt 3", "pmt 1"));
    EXPECT_EQ(database.pmt(3), pmtWithAits(3, {}));
    EXPECT_TRUE(database.pmt(2).empty());
    send(kSharedPid + 1, pmtWithAits(2, {}));
    EXPECT_TRUE(database.pmt(2).empty()) << "on another PID";
}

TEST_F(ADatabase, RefusesSectionNumbersThatNoTableReaches) {
    play(sample);
    listener.told.clear();
    const tsmake::Service& service = sample.services[0];
    const auto numbered = [](tsmake::Section section, std::uint8_t number) {
        section[6] = number;
        section[7] = 0xFF;
        return versioned(std::move(section), 2);
    };
    send(service.pmtPid, numbered(tsmake::pmtSection(service), 1));
    send(service.ait.pid, numbered(tsmake::aitSection(service), broadcast::kMostSections));
    send(0x12, numbered(tsmake::eitSection(sample, service, true), broadcast::kMostSections));
    EXPECT_THAT(listener.told, testing::IsEmpty());
    send(service.ait.pid, numbered(tsmake::aitSection(service), broadcast::kMostSections - 1));
    EXPECT_THAT(listener.told, testing::ElementsAre("ait 28106 changed"));
}

TEST_F(ADatabase, FollowsAFewAitsOfAService) {
    std::vector<std::uint16_t> pids;
    for (std::uint16_t pid = 0x300; pid < 0x30A; ++pid) {
        pids.push_back(pid);
    }
    send(0, tsmake::patSection(sample));
    send(sample.services[0].pmtPid, pmtWithAits(28106, pids));
    for (const std::uint16_t pid : pids) {
        send(pid, tsmake::aitSection(sample.services[0]));
    }
    EXPECT_THAT(database.ait(28106), testing::SizeIs(8));
}

TEST_F(ADatabase, KnowsTheServicesThatItsTablesAnnounce) {
    send(0, tsmake::patSection(sample));
    send(0x10, nit({0, 0, 0}, 5, 2));
    send(0x11, sdt(0x46, 9, {0, 0, 0}, 100, 2));
    EXPECT_TRUE(database.announces(1, 5, 7));
    EXPECT_TRUE(database.announces(1, 9, 101));
    EXPECT_FALSE(database.announces(1, 5, 8));
    EXPECT_FALSE(database.announces(2, 5, 7));
    EXPECT_FALSE(database.announces(1, 5, 0x10007));
    send(0x10, nit({1, 0, 0}, 1025, 1));
    EXPECT_FALSE(database.announces(1, 1025, 7)) << "of the multiplex itself";
}
