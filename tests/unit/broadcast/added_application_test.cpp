// Tests of an application that is added to every service.
#include "added_application.h"

#include <gmock/gmock.h>

#include "section_writer.h"

namespace {

using broadcast::AddedApplication;
using Words = std::vector<unsigned int>;

constexpr unsigned int kHighestPid = 0x1FFE;

si::Ait::Application application() {
    si::Ait::Application made;
    made.organisationId = 0x190;
    made.applicationId = 7;
    made.controlCode = 1;
    made.names = {{"eng", "Mine"}};
    made.transports = {{3, 1, "http://mine.example/"}};
    made.initialPath = "index.html";
    made.profiles = {{0, 1, 1, 1}};
    return made;
}

si::Pmt::Stream stream(std::uint16_t pid, std::uint8_t type = 0x1B, si::Descriptors descriptors = {}) {
    return {type, pid, std::move(descriptors)};
}

si::Pmt::Stream aitStream(std::uint16_t pid, std::vector<std::uint8_t> types) {
    return stream(pid, 0x05, {{0x52, {9}}, {0x6F, std::move(types)}});
}

si::Pmt pmt(std::vector<si::Pmt::Stream> streams) {
    si::Pmt made;
    made.serviceId = 28106;
    made.version = 17;
    made.pcrPid = 256;
    made.streams = std::move(streams);
    return made;
}

si::Pmt signalledIn(const si::Pmt& own) {
    std::string error;
    const std::optional<broadcast::Section> section = AddedApplication(application()).signalledIn(own);
    EXPECT_TRUE(section);
    EXPECT_TRUE(si::crcIsRight(*section));
    const std::optional<si::Pmt> read = si::parsePmt(*section, error);
    EXPECT_TRUE(read) << error;
    return read.value_or(si::Pmt());
}

Words pidsOf(const si::Pmt& of) {
    Words pids;
    for (const si::Pmt::Stream& one : of.streams) {
        pids.push_back(one.pid);
    }
    return pids;
}

}  // namespace

TEST(AnAddedApplication, HasAnAitOfItsOwn) {
    std::string error;
    const AddedApplication added(application());
    const std::optional<si::Ait> ait = si::parseAit(added.ait(), error);
    ASSERT_TRUE(ait) << error;
    EXPECT_TRUE(si::crcIsRight(added.ait()));
    EXPECT_EQ(ait->applicationType, 0x0010);
    EXPECT_FALSE(ait->testApplication);
    ASSERT_EQ(ait->applications.size(), 1U);
    EXPECT_EQ(ait->applications[0].organisationId, 0x190U);
    EXPECT_EQ(ait->applications[0].applicationId, 7U);
    EXPECT_EQ(ait->applications[0].url(), "http://mine.example/index.html");
    EXPECT_EQ(ait->applications[0].names.at(0).text, "Mine");
}

TEST(AnAddedApplication, IsSignalledBesideTheStreamsOfThePmt) {
    si::Pmt own = pmt({stream(256), stream(257, 0x03, {{0x0A, {'d', 'e', 'u', 0}}})});
    own.descriptors = {{0x80, {1, 2, 3}}};
    const si::Pmt told = signalledIn(own);
    EXPECT_EQ(told.serviceId, 28106);
    EXPECT_EQ(told.version, 17);
    EXPECT_EQ(told.pcrPid, 256);
    EXPECT_EQ(told.descriptors.at(0).bytes, (std::vector<std::uint8_t>{1, 2, 3}));
    EXPECT_THAT(pidsOf(told), testing::ElementsAre(256, 257, kHighestPid));
    EXPECT_EQ(si::language(told.streams[1]), "deu");
    EXPECT_EQ(told.streams[2].streamType, 0x05);
    EXPECT_EQ(told.streams[2].descriptors.at(0).tag, 0x6F);
    EXPECT_EQ(told.streams[2].descriptors.at(0).bytes, (std::vector<std::uint8_t>{0x80, 0x10, 0xE0}));
    EXPECT_THAT(si::hbbtvAitPids(told), testing::ElementsAre(kHighestPid));
}

TEST(AnAddedApplication, UsesAPidThatThePmtDoesNotUse) {
    si::Pmt own = pmt({stream(0x1FFD), stream(256, 0x1B, {{0x09, {0x06, 0x04, 0xFF, 0xFC}}})});
    own.pcrPid = 0x1FFE;
    own.descriptors = {{0x09, {0x06, 0x04, 0xFF, 0xFB}}};
    EXPECT_THAT(pidsOf(signalledIn(own)), testing::ElementsAre(0x1FFD, 256, 0x1FFA));
}

TEST(AnAddedApplication, TakesThePlaceOfTheServicesOwnAits) {
    const si::Pmt told = signalledIn(pmt({stream(256), aitStream(300, {0x80, 0x10, 0xE1}), aitStream(301, {})}));
    EXPECT_THAT(pidsOf(told), testing::ElementsAre(256, kHighestPid));
}

TEST(AnAddedApplication, LeavesApplicationsOfOtherTypes) {
    const si::Pmt told =
        signalledIn(pmt({aitStream(300, {0x80, 0x01, 0xE4, 0x80, 0x10, 0xE1}), aitStream(301, {0x80, 0x01, 0xE5})}));
    EXPECT_THAT(pidsOf(told), testing::ElementsAre(300, 301, kHighestPid));
    EXPECT_EQ(told.streams[0].descriptors.at(1).bytes, (std::vector<std::uint8_t>{0x80, 0x01, 0xE4}));
    EXPECT_EQ(si::componentTag(told.streams[0]), 9);
    EXPECT_THAT(si::hbbtvAitPids(told), testing::ElementsAre(kHighestPid));
}

TEST(AnAddedApplication, IsNotSignalledInAPmtWithoutRoom) {
    constexpr std::size_t kFrame = 16;
    constexpr std::size_t kLongest = 1024;
    constexpr std::size_t kOwn = 10;  // bytes of its stream
    const auto ofSize = [](std::size_t size) {
        std::vector<si::Pmt::Stream> streams(3, stream(256, 0x1B, {{0x80, std::vector<std::uint8_t>(255)}}));
        const std::size_t left = size - kFrame - std::size_t{3} * (5 + 2 + 255) - 5 - 2;
        streams.push_back(stream(257, 0x1B, {{0x80, std::vector<std::uint8_t>(left)}}));
        return pmt(std::move(streams));
    };
    const AddedApplication added(application());
    const std::optional<broadcast::Section> full = added.signalledIn(ofSize(kLongest - kOwn));
    ASSERT_TRUE(full);
    EXPECT_EQ(full->size(), kLongest);
    EXPECT_FALSE(added.signalledIn(ofSize(kLongest - kOwn + 1)));
}
