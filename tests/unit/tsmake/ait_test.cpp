// The application descriptor of a generated AIT.
#include <gmock/gmock.h>

#include "multiplex.h"
#include "si/ait.h"
#include "tables.h"

namespace {

using Bytes = std::vector<unsigned int>;

/// The content of the first descriptor of the application.
Bytes descriptorOf(const tsmake::Application& application) {
    tsmake::Service service;
    service.ait.versions = {{0, 0, {application}}};
    const tsmake::Section section = tsmake::aitSection(service);
    std::string error;
    const std::optional<si::Ait> ait = si::parseAit({section.data(), section.size()}, error);
    EXPECT_TRUE(ait) << error;
    const si::Descriptor& first = ait->applications.at(0).descriptors.at(0);
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
