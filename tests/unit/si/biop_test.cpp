// Tests of objects and references that tsmake does not make.
#include "si/biop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "biop_writer.h"
#include "si/download.h"

namespace {

using si::CarouselObject;
using tsmake::biop::be;
using tsmake::biop::withLength;
using Kind = CarouselObject::Kind;

constexpr std::uint32_t kBiopProfile = 0x49534F06;
constexpr std::uint32_t kLiteOptionsProfile = 0x49534F05;

std::string message(const std::string& kind, const std::string& info, const std::string& body) {
    const std::string content =
        withLength("k", 1) + withLength(kind + '\0', 4) + withLength(info, 2) + be(0, 1) + withLength(body, 4);
    return "BIOP" + be(0x01000000, 4) + withLength(content, 4);
}

std::vector<CarouselObject> objectsIn(const std::string& module) {
    std::size_t cost = 0;
    return *si::carouselObjects(module, std::numeric_limits<std::size_t>::max(), cost);
}

/// A reference with one profile of one component.
std::string reference(std::uint32_t profile, std::uint32_t component, const std::string& data) {
    const std::string body = be(0, 1) + be(1, 1) + be(component, 4) + withLength(data, 1);
    return withLength(std::string("fil\0", 4), 4) + be(1, 4) + be(profile, 4) + withLength(body, 4);
}

std::string directoryWith(const std::string& objectReference) {
    const std::string binding = be(1, 1) + withLength(std::string("name\0", 5), 1) +
                                withLength(std::string("fil\0", 4), 1) + be(1, 1) + objectReference + be(0, 2);
    return message("dir", "", be(1, 2) + binding);
}

}  // namespace

TEST(AFile, HasItsContentAndItsType) {
    const std::string type = be(0x72, 1) + withLength("text/html", 1);
    const std::string module = message("fil", be(5, 8) + type, withLength("hello", 4));
    const std::vector<CarouselObject> objects = objectsIn(module);
    ASSERT_EQ(objects.size(), 1U);
    EXPECT_EQ(objects[0].kind, Kind::file);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(objects[0].content.data), objects[0].content.size), "hello");
    EXPECT_EQ(objects[0].contentType, "text/html");
}

TEST(AFile, WithALongerLengthThanItsBytesIsEmpty) {
    const std::vector<CarouselObject> objects = objectsIn(message("fil", be(5, 8), be(6, 4) + "hello"));
    ASSERT_EQ(objects.size(), 1U);
    EXPECT_EQ(objects[0].content.size, 0U);
}

TEST(AStream, HasTheTagsOfItsProgrammes) {
    const std::string programme = be(0, 2) + be(0x19, 2) + be(0x4711, 2) + be(0, 1);
    const std::string other = be(0, 2) + be(0x0B, 2) + be(0x4712, 2) + be(0, 1);
    const std::vector<CarouselObject> objects = objectsIn(message("str", "", be(2, 1) + other + programme));
    ASSERT_EQ(objects.size(), 1U);
    EXPECT_EQ(objects[0].kind, Kind::stream);
    EXPECT_THAT(objects[0].associationTags, testing::ElementsAre(0x4711));
}

TEST(AStreamEventObject, IsReadByTheWidthOfItsTimesThatUsesItUp) {
    // With a duration in two bytes, those for video and data look like a count of one, and a rest is left.
    const std::string streams = be(0, 1) + be(0, 1) + be(1, 1);  // audio, video, data
    const std::string names = be(1, 2) + withLength(std::string("goal\0", 5), 1);
    const std::string tap = be(0, 2) + be(0x0D, 2) + be(0x13, 2) + be(0, 1);
    const std::string body = be(1, 1) + tap + be(1, 1) + be(77, 2);
    for (const unsigned int width : {2U, 4U}) {
        const std::string info = be(0, 1) + be(0, 4) + be(0, width) + streams + names;
        const std::vector<CarouselObject> objects = objectsIn(message("ste", info, body));
        ASSERT_EQ(objects.size(), 1U);
        EXPECT_EQ(objects[0].kind, Kind::streamEvent);
        ASSERT_EQ(objects[0].events.size(), 1U) << width;
        EXPECT_EQ(objects[0].events[0].name, "goal") << width;
        EXPECT_EQ(objects[0].events[0].id, 77) << width;
        EXPECT_THAT(objects[0].associationTags, testing::ElementsAre(0x13));
    }
}

TEST(AnEntry, MayLeadToAnotherService) {
    const std::string nsap = be(0x0000, 2) + be(77, 4) + be(0x0100015A, 4) + be(1, 2) + be(2, 2) + be(3, 2) + be(0, 4);
    const std::string directory =
        directoryWith(reference(kLiteOptionsProfile, 0x49534F46, withLength(nsap, 1) + be(0, 2)));
    const std::vector<CarouselObject> objects = objectsIn(directory);
    ASSERT_EQ(objects.size(), 1U);
    ASSERT_EQ(objects[0].entries.size(), 1U);
    const std::optional<si::ServiceLocation>& location = objects[0].entries[0].object.elsewhere;
    ASSERT_TRUE(location);
    EXPECT_EQ(location->carouselId, 77U);
    EXPECT_EQ(location->transportStreamId, 1);
    EXPECT_EQ(location->originalNetworkId, 2);
    EXPECT_EQ(location->serviceId, 3);
    int given = 0;
    si::eventObjects(directory, [&given](const CarouselObject& object) {
        ++given;
        EXPECT_THAT(object.entries, testing::IsEmpty());
    });
    EXPECT_EQ(given, 1);
}

TEST(AnEntry, WithoutADeliveryStillHasItsPlace) {
    const std::string location = be(9, 4) + be(5, 2) + be(0x0100, 2) + withLength("key", 1);
    const std::vector<CarouselObject> objects = objectsIn(directoryWith(reference(kBiopProfile, 0x49534F50, location)));
    ASSERT_EQ(objects.at(0).entries.size(), 1U);
    const CarouselObject::Entry& entry = objects[0].entries[0];
    EXPECT_EQ(entry.name, "name");
    EXPECT_EQ(entry.object.carouselId, 9U);
    EXPECT_EQ(entry.object.moduleId, 5);
    EXPECT_EQ(entry.object.key, "key");
    EXPECT_FALSE(entry.object.delivery);
}

TEST(AnEntry, WithoutAPlaceIsLeftOut) {
    EXPECT_THAT(objectsIn(directoryWith(reference(kBiopProfile, 0x49534F40, be(0, 1)))).at(0).entries,
                testing::IsEmpty());
}

TEST(TheObjectsOfAModule, StopBeforeWhatDoesNotFit) {
    const std::string whole = message("fil", be(1, 8), withLength("a", 4));
    EXPECT_EQ(objectsIn(whole + whole + whole.substr(0, whole.size() - 1)).size(), 2U);
    EXPECT_EQ(objectsIn(whole + "BIPO" + whole).size(), 1U);
    EXPECT_EQ(objectsIn("").size(), 0U);
}

TEST(TheObjectsOfAModule, AreNoneIfTheyTakeTooMuchMemory) {
    const std::string whole = message("fil", be(1, 8), withLength("a", 4));
    std::size_t cost = 0;
    EXPECT_TRUE(si::carouselObjects(whole, 1000, cost));
    EXPECT_FALSE(si::carouselObjects(whole, cost - 1, cost));
}
