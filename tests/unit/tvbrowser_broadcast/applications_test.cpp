// The applications of the presented service.
#include "application_table.h"
#include "made_tables.h"

using testing::ElementsAre;
using tvbrowser::ApplicationTable;

namespace {

class AnApplicationTable : public testing::Test {
protected:
    AnApplicationTable() {
        service.serviceId = 1;
        service.ait.pid = 0x200;
        service.ait.sections = 2;
        for (const std::uint8_t version : {std::uint8_t{1}, std::uint8_t{2}}) {
            service.ait.versions.push_back({version, version, {application(version, 1), application(version, 2)}});
        }
    }
    static tsmake::Application application(unsigned int version, std::uint16_t id) {
        return {7, id, 1, "V" + std::to_string(version), "http://a/", "p"};
    }
    void setPmt(bool hasEnded = false) { table.setPmt(pmtOf(tsmake::pmtSection(service, hasEnded))); }
    void add(unsigned int number, std::size_t state) {
        table.add(tsmake::aitSection(service, number, state), error);
        EXPECT_EQ(error, "");
    }
    std::vector<std::string> names() const {
        std::vector<std::string> all;
        const json value = table.value();
        for (const json& each : value["list"]) {
            all.push_back(each["name"]);
        }
        return all;
    }

    tsmake::Service service;
    ApplicationTable table;
    std::string error;
};

}  // namespace

TEST_F(AnApplicationTable, IsKnownWithThePmtAndCompleteWithAllSections) {
    EXPECT_EQ(table.value(), json::parse(R"({"known": false, "signalled": false, "complete": false, "list": []})"));
    EXPECT_FALSE(table.takeNews());
    setPmt();
    EXPECT_TRUE(table.takeNews());
    EXPECT_EQ(table.value()["signalled"], true);
    table.hear(1);
    add(0, 0);
    EXPECT_TRUE(table.takeNews());
    EXPECT_EQ(table.value()["complete"], false);
    EXPECT_THAT(names(), ElementsAre("V1"));
    add(1, 0);
    EXPECT_EQ(table.value()["complete"], true);
    EXPECT_THAT(names(), ElementsAre("V1", "V1"));
}

TEST_F(AnApplicationTable, KeepsTheOldVersionUntilTheNewOneIsWhole) {
    setPmt();
    table.hear(1);
    add(0, 0);
    add(1, 0);
    table.hear(2);
    add(0, 1);
    EXPECT_THAT(names(), ElementsAre("V1", "V1"));
    add(1, 1);
    EXPECT_THAT(names(), ElementsAre("V2", "V2"));
}

TEST_F(AnApplicationTable, BelievesAReplayUntilTheBroadcastSaysOtherwise) {
    setPmt();
    add(0, 0);
    add(1, 0);
    table.add(si::Bytes(), error);
    EXPECT_THAT(names(), ElementsAre("V1", "V1"));
    table.hear(2);
    EXPECT_THAT(names(), ElementsAre());
    add(0, 1);
    add(1, 0);
    EXPECT_THAT(names(), ElementsAre("V2"));
}

TEST_F(AnApplicationTable, IsEmptyWhenThePmtHasNoAit) {
    setPmt();
    table.hear(1);
    add(0, 0);
    setPmt(true);
    EXPECT_EQ(table.value(), json::parse(R"({"known": true, "signalled": false, "complete": false, "list": []})"));
    table.hear(2);
    add(0, 1);
    EXPECT_EQ(table.value()["signalled"], true);
    EXPECT_THAT(names(), ElementsAre("V2"));
}

TEST_F(AnApplicationTable, SaysWhatIsWrongWithASection) {
    Section wrong = tsmake::aitSection(service, 0, 0);
    wrong.back() ^= 1U;
    table.add(wrong, error);
    EXPECT_EQ(error, "AIT section: wrong CRC_32");
}

TEST_F(AnApplicationTable, TakesNoOtherApplicationType) {
    setPmt();
    SectionWriter writer(0x74, 1, 1);
    writer.open12().close().open12().u32(1).u16(1).u8(1).open12().close().close();
    table.add(writer.finish(), error);
    EXPECT_THAT(names(), ElementsAre());
}

TEST_F(AnApplicationTable, GivesTheCarouselOfAnApplicationWithoutAddress) {
    table.clear({1, 0x401, 0x6DCA});
    setPmt();
    SectionWriter writer(0x74, 0x10, 1);
    writer.open12().close().open12().u32(7).u16(9).u8(1).open12();
    writer.text(textOf("00090500000102014002FF")).text(textOf("02050001017F20")).text(textOf("160101"));
    writer.openDescriptor(0x15).text("start.html").close().close().close();
    table.add(writer.finish(), error);
    ASSERT_EQ(error, "");
    const json value = table.value();
    ASSERT_EQ(value["list"].size(), 1U);
    EXPECT_EQ(value["list"][0]["url"], "");
    EXPECT_EQ(value["list"][0]["protocols"], json{1});
    EXPECT_EQ(value["list"][0]["carousel"], json::parse(R"({"componentTag": 32, "path": "start.html"})"));
    EXPECT_EQ(value["list"][0]["entries"], json{"dvb://1.401.6dca.20/start.html"});
    EXPECT_EQ(value["list"][0]["usage"], 1);
    EXPECT_EQ(value["list"][0]["serviceBound"], false);
    EXPECT_EQ(value["list"][0]["visibility"], 2);
}

TEST_F(AnApplicationTable, GivesTheEntryPointsInTheOrderThatTheAitPrefers) {
    table.clear({1, 0x401, 0x6DCA});
    tsmake::Application both = application(1, 1);
    both.carouselTag = 0x20;
    tsmake::Application carouselFirst = both;
    carouselFirst.isCarouselFirst = true;
    service.ait.sections = 1;
    service.ait.versions = {{0, 1, {both, carouselFirst}}};
    setPmt();
    add(0, 0);
    const json list = table.value()["list"];
    EXPECT_EQ(list[0]["entries"], json::parse(R"(["http://a/p", "dvb://1.401.6dca.20/p"])"));
    EXPECT_EQ(list[1]["entries"], json::parse(R"(["dvb://1.401.6dca.20/p", "http://a/p"])"));
    EXPECT_EQ(list[1]["url"], "http://a/p");
}
