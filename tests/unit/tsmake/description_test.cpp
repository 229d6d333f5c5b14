// Descriptions of multiplexes: their content appears in the tables, and errors name the place.
#include "description.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "scheduler.h"
#include "tables.h"

namespace {

using tsmake::Multiplex;
using tsmake::Service;

std::string everything() {
    std::ifstream file(EVERYTHING_FILE);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string errorOf(const std::string& text) {
    std::string error;
    return tsmake::parseDescription(text, error) ? "none" : error;
}

/// The error for a description whose only service has these members.
std::string errorOfService(const std::string& members) {
    return errorOf(R"({"originalNetworkId": 1, "transportStreamId": 1, "services": [{"id": 1, )" + members + "}]}");
}

/// The error for a description whose only application has these members.
std::string errorOfApplication(const std::string& members) {
    return errorOfService(R"("ait": {"versions": [{"version": 0, "applications": [{"organisation": 1, "id": 1,
        "control": "present", "urlBase": "http://a.example/", "path": "", )" +
                          members + "}]}]}");
}

}  // namespace

TEST(ADescription, NamesEachPartOfAnObjectsPath) {
    std::string error;
    const auto multiplex = tsmake::parseDescription(R"({"originalNetworkId": 1, "transportStreamId": 1,
        "services": [{"id": 1, "streamEvents": {"object": "/events/goals"}}]})",
                                                    error);
    ASSERT_TRUE(multiplex) << error;
    EXPECT_EQ(multiplex->services[0].streamEvents.object, "events/goals");
    for (const char* const path : {"/", "//goals", "events//goals", "events/"}) {
        EXPECT_EQ(errorOfService(R"("streamEvents": {"object": ")" + std::string(path) + "\"}"),
                  "services[0].streamEvents.object: has a part without a name");
    }
}

TEST(ADescription, IsRefusedIfItIsNestedTooDeeply) {
    const std::string deep(100000, '[');
    EXPECT_EQ(errorOf(R"({"bitRate": )" + deep + std::string(deep.size(), ']') + "}"),
              "lists and objects are nested more than 32 times");
}

TEST(ADescription, MayHoldEverything) {
    std::string error;
    const std::optional<Multiplex> multiplex = tsmake::parseDescription(everything(), error);
    ASSERT_TRUE(multiplex) << error;
    EXPECT_EQ(multiplex->bitRate, 3008000U);
    EXPECT_EQ(multiplex->networkName, "\x15R\xC3\xA9seau") << "UTF-8 where ASCII does not do";
    EXPECT_EQ(multiplex->start, 1772366400);
    EXPECT_EQ(multiplex->deliverySystem, std::string("\x44\x0B\x03\x46\x00\x00\xFF\xF2\x05\x00\x69\x00\x0F", 13));
    ASSERT_EQ(multiplex->services.size(), 3U);
    const Service& first = multiplex->services[0];
    EXPECT_EQ(first.pmtPid, 4096);
    ASSERT_EQ(first.components.size(), 5U);
    EXPECT_EQ(first.components[0].pid, 512);
    EXPECT_EQ(first.components[2].tag, std::nullopt);
    EXPECT_EQ(first.components[3].kind, tsmake::Component::Kind::subtitle);
    EXPECT_EQ(first.components[4].pages[0].type, 1);
    EXPECT_EQ(first.components[4].pages[1].number, 888U);
    EXPECT_EQ(first.events[2].name, "\x01\xC2\xE0\xD5\xE2\xD8\xD9") << "ISO 8859-5";
    EXPECT_EQ(first.events[2].duration, 3600U);
    ASSERT_EQ(first.ait.versions.size(), 2U);
    EXPECT_EQ(first.ait.versions[1].applications[0].controlCode, 4);
    const tsmake::Application& application = first.ait.versions[1].applications[1];
    EXPECT_FALSE(application.isServiceBound);
    EXPECT_EQ(application.priority, 7);
    EXPECT_EQ(application.visibility, 1);
    ASSERT_EQ(application.profiles.size(), 2U);
    EXPECT_EQ(application.profiles[0].minor, 6);
    EXPECT_EQ(application.profiles[1].profile, 2);
    EXPECT_EQ(first.ait.end, 6U);
    EXPECT_TRUE(first.ait.emptySignalling);
    EXPECT_EQ(first.streamEvents.object, "events/goals");
    EXPECT_EQ(first.streamEvents.events[2].second, 3U);
    EXPECT_EQ(first.streamEvents.events[3].data, std::string("\x00\xFF\x7F", 3));
    ASSERT_EQ(first.carousels.size(), 2U);
    EXPECT_EQ(first.carousels[0].id, 2U);
    EXPECT_EQ(first.carousels[0].tag, 32);
    EXPECT_EQ(first.carousels[0].versions[0].folder, "folder");
    EXPECT_EQ(first.carousels[1].blockTag, 51);
    EXPECT_FALSE(first.carousels[1].isCompressed);
    EXPECT_EQ(first.carousels[1].versions[1].second, 4U);
    EXPECT_EQ(first.carousels[1].eventObjects[0].path, "events/cards");
    EXPECT_EQ(first.carousels[1].contentTypes.at("index.html"), "text/html;charset=utf-8");
    EXPECT_EQ(first.carousels[1].eventObjects[0].idsByName.at("yellow"), 9);
    EXPECT_TRUE(first.hasSchedule);
    EXPECT_EQ(first.events[0].ratings[0].country, "FRA");
    EXPECT_EQ(first.privateSections[1].size, 4096U);
    EXPECT_TRUE(multiplex->services[1].isSilent);
    EXPECT_EQ(multiplex->otherStreams[0].services[0].name, "Elsewhere");
}

TEST(ADescription, GivesPidsToWhatHasNone) {
    std::string error;
    const std::optional<Multiplex> multiplex = tsmake::parseDescription(everything(), error);
    ASSERT_TRUE(multiplex) << error;
    const Service& first = multiplex->services[0];
    EXPECT_EQ(first.components[1].pid, 0x102);
    EXPECT_EQ(first.ait.pid, 0x105);
    EXPECT_EQ(first.streamEvents.pid, 0x106);
    EXPECT_EQ(first.streamEvents.carouselPid, 0x107);
    EXPECT_EQ(first.carousels[0].pid, 0x140);
    EXPECT_EQ(first.carousels[1].blockPid, 701);
    EXPECT_EQ(multiplex->services[1].pmtPid, 0x201) << "512 is taken";
    EXPECT_EQ(multiplex->services[2].components[0].pid, 0x301);
}

TEST(ADescription, MayStartInAnyYearThatTablesHave) {
    for (const auto& [text, seconds] : {std::pair("1900-12-31T00:00:00Z", std::int64_t{-2177539200}),
                                        std::pair("2038-02-01T01:02:03Z", std::int64_t{2148598923})}) {
        std::string error;
        const std::optional<Multiplex> multiplex = tsmake::parseDescription(
            R"({"originalNetworkId": 1, "transportStreamId": 1, "start": ")" + std::string(text) + "\"}", error);
        ASSERT_TRUE(multiplex) << error;
        EXPECT_EQ(multiplex->start, seconds);
        const tsmake::Section tdt = tsmake::tdtSection(*multiplex, 0);
        EXPECT_EQ((tdt[3] << 8) + tdt[4], si::mjdOf(seconds));
    }
}

TEST(ADescription, IsRefusedWithThePlaceOfTheMistake) {
    EXPECT_THAT(errorOf("{\n  \"services\": [\n"), testing::HasSubstr("parse error at line 3, column 1"));
    EXPECT_EQ(errorOf("[]"), "the description: an object is needed");
    EXPECT_EQ(errorOf("{}"), "originalNetworkId: is missing");
    EXPECT_EQ(errorOf(R"({"originalNetworkId": 70000})"),
              "originalNetworkId: 70000 is not a whole number from 0 to 65535");
    EXPECT_EQ(errorOf(R"({"originalNetworkId": 1, "transportStreamId": 1, "servces": []})"),
              "servces: is no known key");
    EXPECT_EQ(errorOf(R"({"originalNetworkId": 1, "transportStreamId": 1, "start": "today"})"),
              "start: \"today\" is not a time like 2026-01-01T09:00:00Z");
    EXPECT_EQ(errorOf(R"({"originalNetworkId": 1, "transportStreamId": 1, "start": "2100-01-01T00:00:00Z"})"),
              "start: tables have dates from 1858-11-17 to 2038-04-22");
    EXPECT_EQ(errorOf(R"({"originalNetworkId": 1, "transportStreamId": 1, "deliverySystem": "4405"})"),
              "deliverySystem: \"4405\" is not a descriptor in hexadecimal digits");
    EXPECT_EQ(errorOf(R"({"originalNetworkId": 1, "transportStreamId": 1, "services": {}})"),
              "services: a list is needed");
    EXPECT_EQ(errorOf(R"({"originalNetworkId": 1, "transportStreamId": 1, "services": [{"id": 5}, {"id": 5}]})"),
              "services[1].id: 5 is the id of an earlier service too");
}

TEST(ADescription, IsRefusedWithThePlaceInAService) {
    EXPECT_EQ(errorOfService(R"("components": [{"kind": "smell"}])"),
              "services[0].components[0].kind: \"smell\" is none of video, audio, subtitle, teletext");
    EXPECT_EQ(errorOfService(R"("components": [{"kind": "subtitle", "pages": [{"number": 100}]}])"),
              "services[0].components[0].pages: is for teletext");
    EXPECT_EQ(errorOfService(R"("components": [{"kind": "teletext", "pages": [{"number": 99}]}])"),
              "services[0].components[0].pages[0].number: 99 is not a whole number from 100 to 899");
    EXPECT_EQ(errorOfService(R"("components": [{"kind": "video", "pid": 31}])"),
              "services[0].components[0].pid: 31 is not a whole number from 32 to 8190");
    EXPECT_EQ(errorOfService(R"("components": [{"kind": "audio", "language": "en"}])"),
              "services[0].components[0].language: has three letters");
    EXPECT_EQ(errorOfService(R"("name": {"iso8859": 9, "text": "Τρία"})"),
              "services[0].name.text: has a character that is not in ISO 8859-9");
    EXPECT_EQ(errorOfService(R"("silent": 1)"), "services[0].silent: 1 is neither true nor false");
    EXPECT_EQ(errorOfService(R"("ait": {"versions": [{"second": 2, "version": 1}, {"second": 1, "version": 2}]})"),
              "services[0].ait.versions[1].second: is earlier than the one before");
    EXPECT_EQ(errorOfApplication(R"("serviceBound": 0)"),
              "services[0].ait.versions[0].applications[0].serviceBound: 0 is neither true nor false");
    EXPECT_EQ(errorOfApplication(R"("priority": 256)"),
              "services[0].ait.versions[0].applications[0].priority: 256 is not a whole number from 0 to 255");
    EXPECT_EQ(errorOfApplication(R"("visibility": 4)"),
              "services[0].ait.versions[0].applications[0].visibility: 4 is not a whole number from 0 to 3");
    EXPECT_EQ(errorOfApplication(R"("profiles": [{"version": "1.2.1"}])"),
              "services[0].ait.versions[0].applications[0].profiles[0].version: is no known key");
    EXPECT_EQ(errorOfService(R"("privateSections": [{"size": 5000}])"),
              "services[0].privateSections[0].size: 5000 is not a whole number from 16 to 4096");
    EXPECT_EQ(errorOfService(R"("carousels": [{}])"), "services[0].carousels[0].folder: is missing, and versions too");
    EXPECT_EQ(errorOfService(R"("carousels": [{"folder": "a", "blockSize": 4067}])"),
              "services[0].carousels[0].blockSize: 4067 is not a whole number from 1 to 4066");
    EXPECT_EQ(errorOfService(R"("carousels": [{"folder": "a", "eventObjects": [{"events": []}]}])"),
              "services[0].carousels[0].eventObjects[0].path: is missing");
    EXPECT_EQ(errorOfService(R"("streamEvents": {"events": [{"id": 1, "dataHex": "0"}]})"),
              "services[0].streamEvents.events[0].dataHex: is not bytes in hexadecimal digits");
    EXPECT_EQ(errorOfService(R"("streamEvents": {"events": [{"id": 1, "data": "a", "dataHex": "00"}]})"),
              "services[0].streamEvents.events[0].dataHex: stands beside data");
    EXPECT_EQ(errorOfService(R"("events": [{"id": 1, "parentalRatings": [{"country": "FR", "rating": 9}]}])"),
              "services[0].events[0].parentalRatings[0].country: has three letters");
    EXPECT_EQ(errorOfService(R"("pmtPid": 100, "components": [{"kind": "video", "pid": 100}])"),
              "PID 100 is given to PMT of service 1 and to component 1 of service 1");
}

TEST(AMultiplex, IsRefusedIfItExceedsTheBitRate) {
    std::string error;
    std::optional<Multiplex> multiplex = tsmake::parseDescription(everything(), error);
    ASSERT_TRUE(multiplex) << error;
    multiplex->bitRate = 300000;
    try {
        tsmake::writeMultiplex(*multiplex, 2, [](const std::uint8_t*) {});
        FAIL() << "it was written";
    } catch (const std::length_error& failure) {
        EXPECT_STREQ(failure.what(), "more is to be sent than 300000 bit/s have room for");
    }
}
