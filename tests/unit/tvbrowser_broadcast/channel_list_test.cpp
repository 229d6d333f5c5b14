// The channel list that PAT, SDT and NIT give.
#include "channel_list.h"

#include "made_tables.h"

using testing::ElementsAre;
using tvbrowser::ChannelList;

namespace {

/// A PAT in sections of one service each.
Section patSection(std::uint16_t tsid, std::uint16_t sid, unsigned int version, unsigned int number = 0,
                   unsigned int last = 0) {
    return SectionWriter(0x00, tsid, static_cast<std::uint8_t>(version), static_cast<std::uint8_t>(number),
                         static_cast<std::uint8_t>(last))
        .u16(sid)
        .u16(0xE100)
        .finish();
}

/// An SDT with one service.
Section sdtSection(std::uint8_t table, std::uint16_t tsid, std::uint16_t sid, unsigned int type,
                   const std::string& name) {
    SectionWriter writer(table, tsid, 0);
    writer.u16(1).u8(0xFF).u16(sid).u8(0xFC).open12(8);
    writer.openDescriptor(0x48).u8(type).lengthText("").lengthText(name).close().close();
    return writer.finish();
}

/// A NIT that says that the transport stream of network 1 is terrestrial, by T2.
Section nitSection(std::uint16_t network, unsigned int version, std::uint16_t tsid) {
    SectionWriter writer(0x40, network, static_cast<std::uint8_t>(version));
    writer.open12().close().open12().u16(tsid).u16(1).open12().text(textOf("7F0404001234")).close().close();
    return writer.finish();
}

std::vector<int> sidsOf(const ChannelList& list) {
    std::vector<int> sids;
    for (const json& channel : list.value()) {
        sids.push_back(channel["sid"]);
    }
    return sids;
}

}  // namespace

TEST(AChannelList, HasWhatTheTablesOfAMultiplexSay) {
    ChannelList list;
    EXPECT_FALSE(list.renew());
    list.add(tsmake::patSection(kSample));
    EXPECT_TRUE(list.renew());
    EXPECT_THAT(sidsOf(list), ElementsAre(28106, 28107, 28108, 28120));
    EXPECT_EQ(list.value()[0]["onid"], 65535);
    EXPECT_EQ(list.value()[0]["type"], 2);
    EXPECT_EQ(list.value()[0]["idType"], 12);
    EXPECT_EQ(list.value()[0]["nid"], nullptr);
    list.add(tsmake::sdtSection(kSample));
    list.add(tsmake::nitSection(kSample));
    EXPECT_TRUE(list.renew());
    EXPECT_FALSE(list.renew());
    EXPECT_EQ(list.value()[1], (json{{"onid", 1},
                                     {"tsid", 1025},
                                     {"sid", 28107},
                                     {"nid", 1},
                                     {"name", "Velmora Zwei Föhn"},
                                     {"type", 0},
                                     {"idType", 10},
                                     {"dsd", "440b03460000fff2050069000f"},
                                     {"majorChannel", 2}}));
}

TEST(AChannelList, TakesTheNetworkOfThePresentedServiceWhileNoTableHasIt) {
    ChannelList list;
    list.add(patSection(7, 1, 0));
    list.addNetwork(7, 9);
    list.renew();
    EXPECT_EQ(list.value()[0]["onid"], 9);
}

TEST(AChannelList, KeepsTheOldVersionUntilTheNewOneIsWhole) {
    ChannelList list;
    list.add(patSection(7, 1, 0));
    list.renew();
    list.add(patSection(7, 2, 1, 0, 1));
    EXPECT_FALSE(list.renew());
    list.add(patSection(7, 3, 1, 1, 1));
    EXPECT_TRUE(list.renew());
    EXPECT_THAT(sidsOf(list), ElementsAre(2, 3));
}

TEST(AChannelList, HasOnlyTheServicesOfThePatWhereThereIsOne) {
    ChannelList list;
    list.add(sdtSection(0x42, 7, 5, 1, "Gone"));
    list.add(patSection(7, 1, 0));
    list.renew();
    EXPECT_THAT(sidsOf(list), ElementsAre(1));
}

TEST(AChannelList, HasServicesThatOnlyTheNitLists) {
    SectionWriter writer(0x40, 3, 0);
    writer.open12().close().open12().u16(8).u16(1).open12();
    writer
        .text(textOf("4106000A01000B02"
                     "7F0404001234"))
        .close()
        .close();
    ChannelList list;
    list.add(writer.finish());
    list.renew();
    ASSERT_THAT(sidsOf(list), ElementsAre(10, 11));
    EXPECT_EQ(list.value()[0]["type"], 0);
    EXPECT_EQ(list.value()[1]["type"], 1);
    EXPECT_EQ(list.value()[1]["idType"], 16);
    list.add(sdtSection(0x46, 8, 11, 2, "Eleven"));
    list.renew();
    ASSERT_THAT(sidsOf(list), ElementsAre(11));
    EXPECT_EQ(list.value()[0]["name"], "Eleven");
}

TEST(AChannelList, KeepsTheOrderInWhichStreamsBecameKnown) {
    ChannelList list;
    list.add(patSection(9, 1, 0));
    list.renew();
    list.add(patSection(7, 2, 0));
    list.renew();
    EXPECT_THAT(sidsOf(list), ElementsAre(1, 2));
}

TEST(AChannelList, ForgetsABroadcastThatAnotherOneReplaces) {
    ChannelList list;
    list.add(patSection(9, 1, 0));
    list.renew();
    list.startAgain();
    list.add(patSection(9, 1, 0));
    list.add(patSection(7, 2, 0));
    list.renew();
    EXPECT_THAT(sidsOf(list), ElementsAre(1, 2));
    list.startAgain();
    list.add(patSection(5, 3, 0));
    list.renew();
    EXPECT_THAT(sidsOf(list), ElementsAre(3));
}

TEST(AChannelList, FollowsNewVersionsAtItsLimit) {
    ChannelList list;
    for (unsigned int stream = 0; stream <= ChannelList::kMostTables; ++stream) {
        const auto tsid = static_cast<std::uint16_t>(stream);
        list.add(patSection(tsid, 1, 0));
        list.add(sdtSection(0x46, tsid, 1, 1, "Old"));
        list.add(nitSection(tsid, 0, tsid));
    }
    list.renew();
    EXPECT_EQ(list.value().size(), ChannelList::kMostTables);
    EXPECT_EQ(list.value()[0]["name"], "Old");
    EXPECT_EQ(list.value()[0]["idType"], 16);
    list.add(patSection(0, 2, 1));
    list.add(sdtSection(0x46, 0, 2, 1, "New"));
    list.add(nitSection(0, 1, 9999));
    EXPECT_TRUE(list.renew());
    EXPECT_EQ(list.value()[0]["sid"], 2);
    EXPECT_EQ(list.value()[0]["name"], "New");
    EXPECT_EQ(list.value()[0]["idType"], 12);
}

TEST(AChannelList, LeavesBadSectionsOut) {
    ChannelList list;
    Section wrong = patSection(9, 1, 0);
    wrong.back() ^= 1U;
    list.add(wrong);
    list.add(Section());
    list.add(Section{0x42, 0xF0});
    EXPECT_FALSE(list.renew());
    list.add(sdtSection(0x46, 8, 11, 2, "\x15\xFF\xFE"));
    EXPECT_TRUE(list.renew());
    EXPECT_EQ(json::parse(list.value().dump())[0]["name"], list.value()[0]["name"]);
}
