// The components of the presented service.
#include "component_list.h"
#include "made_tables.h"

using testing::ElementsAre;
using tvbrowser::ComponentList;
using tvbrowser::ComponentReport;

namespace {

constexpr std::uint32_t kEnglish = 0x656E67;

class AComponentList : public testing::Test {
protected:
    AComponentList() {
        service.serviceId = 1;
        service.components = {{tsmake::Component::Kind::video, 1, "", 0x101},
                              {tsmake::Component::Kind::audio, 2, "eng", 0x102},
                              {tsmake::Component::Kind::audio, 3, "deu", 0x103}};
        list.setPmt(pmtOf(tsmake::pmtSection(service)));
    }
    static ComponentReport report(std::uint16_t index, std::uint32_t type, std::uint32_t pid,
                                  bool isPresented = false) {
        return {index, type, pid, 0x1B, 3, 2, static_cast<std::uint16_t>(index + 1U), false, kEnglish, isPresented};
    }
    void addAll() {
        list.add(report(0, 0, 0x101, true));
        list.add(report(1, 1, 0x102, true));
        list.add(report(2, 1, 0x103));
    }

    tsmake::Service service;
    ComponentList list;
};

}  // namespace

TEST_F(AComponentList, IsWholeWithTheLastComponentOfThePmt) {
    list.add(report(0, 0, 0x101));
    EXPECT_FALSE(list.isLast(0));
    addAll();
    EXPECT_TRUE(list.isWhole());
    EXPECT_TRUE(list.isLast(2));
    EXPECT_THAT(list.news(), ElementsAre(0, 1));
    EXPECT_THAT(list.news(), testing::IsEmpty());
    EXPECT_EQ(list.value()[1], (json{{"index", 1},
                                     {"type", 1},
                                     {"pid", 0x102},
                                     {"encoding", 0x1B},
                                     {"tag", 2},
                                     {"language", "eng"},
                                     {"aspectRatio", 3},
                                     {"audioChannels", 2},
                                     {"encrypted", false},
                                     {"audioDescription", false},
                                     {"hearingImpaired", false},
                                     {"active", true}}));
}

TEST_F(AComponentList, TellsASelectionOnceAndNotAsAChange) {
    addAll();
    list.news();
    EXPECT_TRUE(list.select(1, 2, 0x103));
    EXPECT_FALSE(list.select(1, 2, 0x103));
    EXPECT_EQ(list.value()[1]["active"], false);
    EXPECT_EQ(list.value()[2]["active"], true);
    EXPECT_TRUE(list.select(1, 0xFFFFFFFF, 0x1FFF));
    EXPECT_FALSE(list.select(1, 0xFFFFFFFF, 0x1FFF));
    EXPECT_EQ(list.value()[2]["active"], false);
    EXPECT_FALSE(list.select(7, 1, 0x103));
    EXPECT_THAT(list.news(), testing::IsEmpty());
}

TEST_F(AComponentList, DropsWhatThePmtNoLongerHas) {
    addAll();
    list.news();
    service.components.pop_back();
    list.setPmt(pmtOf(tsmake::pmtSection(service)));
    EXPECT_TRUE(list.isWhole());
    EXPECT_EQ(list.value().size(), 2U);
    EXPECT_THAT(list.news(), ElementsAre(1));
}

TEST_F(AComponentList, HasNoTextForWhatIsNoLanguageAndNoTagForNone) {
    ComponentReport odd = report(0, 0, 0x101);
    odd.language = 0x00FF41;
    odd.tag = 0xFFFF;
    odd.type = 9;
    list.add(odd);
    EXPECT_EQ(list.value(), json::array());
    odd.type = 0;
    list.add(odd);
    EXPECT_EQ(list.value()[0]["language"], "");
    EXPECT_EQ(list.value()[0]["tag"], nullptr);
}
