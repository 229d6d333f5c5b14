// The application descriptor of a generated AIT.
#include <gmock/gmock.h>

#include "multiplex.h"
#include "si/ait.h"
#include "tables.h"

namespace {

using Bytes = std::vector<unsigned int>;

si::Ait::Application signalled(const tsmake::Application& application) {
    tsmake::Service service;
    service.ait.versions = {{0, 0, {application}}};
    const tsmake::Section section = tsmake::aitSection(service);
    std::string error;
    const std::optional<si::Ait> ait = si::parseAit({section.data(), section.size()}, error);
    EXPECT_TRUE(ait) << error;
    return ait->applications.at(0);
}

std::vector<si::Ait::Transport> transportsOf(const tsmake::Application& application) {
    return signalled(application).transports;
}

/// The content of the first descriptor of the application.
Bytes descriptorOf(const tsmake::Application& application) {
    const si::Descriptor first = signalled(application).descriptors.at(0);
    EXPECT_EQ(first.tag, 0U);
    return {first.bytes.begin(), first.bytes.end()};
}

}  // namespace

TEST(AnApplicationOfABroadcast, IsServiceBoundAndVisibleUnlessItSaysOtherwise) {
    EXPECT_EQ(descriptorOf({}), (Bytes{5, 0, 0, 1, 2, 1, 0xFF, 1, 1}));
}

TEST(AnApplicationOfABroadcast, HasTheFlagsAndPriorityThatItSays) {
    tsmake::Application application;
    application.isServiceBound = false;
    EXPECT_EQ(descriptorOf(application), (Bytes{5, 0, 0, 1, 2, 1, 0x7F, 1, 1}));
    application.visibility = 1;
    application.priority = 255;
    EXPECT_EQ(descriptorOf(application), (Bytes{5, 0, 0, 1, 2, 1, 0x3F, 255, 1}));
}

TEST(AnApplicationOfABroadcast, HasTheProfilesThatItSays) {
    tsmake::Application application;
    application.profiles = {{0x0102, 1, 6, 1}, {0, 2, 0, 0}};
    EXPECT_EQ(descriptorOf(application), (Bytes{10, 1, 2, 1, 6, 1, 0, 0, 2, 0, 0, 0xFF, 1, 1}));
    application.profiles.clear();
    EXPECT_EQ(descriptorOf(application), (Bytes{0, 0xFF, 1, 1}));
}

TEST(AnApplicationOfABroadcast, WithMoreProfilesThanFitIsRefused) {
    tsmake::Application application;
    application.profiles.resize(60);
    EXPECT_THROW(descriptorOf(application), std::length_error);
}

TEST(AnApplicationOfABroadcast, MayBeInACarouselAlone) {
    tsmake::Application application;
    application.carouselTag = 0x20;
    const std::vector<si::Ait::Transport> transports = transportsOf(application);
    ASSERT_EQ(transports.size(), 1U);
    EXPECT_EQ(transports[0].protocolId, 1);
    EXPECT_EQ(transports[0].componentTag, 0x20);
}

TEST(AnApplicationOfABroadcast, MayBeInACarouselToo) {
    tsmake::Application application;
    application.urlBase = "http://a.example/";
    application.carouselTag = 0x20;
    EXPECT_EQ(transportsOf(application).at(0).urlBase, "http://a.example/");
    EXPECT_EQ(transportsOf(application).at(1).componentTag, 0x20);
    application.isCarouselFirst = true;
    EXPECT_EQ(transportsOf(application).at(0).componentTag, 0x20);
    EXPECT_EQ(transportsOf(application).at(1).urlBase, "http://a.example/");
}
