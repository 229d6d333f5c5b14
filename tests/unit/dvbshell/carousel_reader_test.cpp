// Carousels that are empty, too large, or several on one service.
#include "carousel_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using dvbshell::CarouselReader;
using testing::ElementsAre;

constexpr std::uint16_t kBlockSize = 4000;

/// A big-endian number.
std::string be(std::uint64_t value, unsigned int width) {
    std::string bytes;
    while (width-- != 0) {
        bytes.push_back(static_cast<char>(value >> (8U * width) & 0xFFU));
    }
    return bytes;
}

std::string message(unsigned int tableId, unsigned int messageId, std::uint32_t id, const std::string& payload) {
    return be(tableId, 1) + std::string(7, '\0') + be(0x1103, 2) + be(messageId, 2) + be(id, 4) + be(0xFF00, 2) +
           be(payload.size(), 2) + payload + be(0, 4);
}

struct Module {
    std::uint16_t id;
    std::uint32_t size;
    std::uint32_t originalSize = 0;  // 0: not compressed
};

/// The module's information: time-outs, no taps, and the descriptor of a compressed module.
std::string infoOf(const Module& module) {
    const std::string descriptor = be(0x09, 1) + be(5, 1) + be(0, 1) + be(module.originalSize, 4);
    return module.originalSize == 0 ? std::string()
                                    : std::string(12, '\0') + be(0, 1) + be(descriptor.size(), 1) + descriptor;
}

std::string announcing(std::uint32_t carousel, const std::vector<Module>& modules) {
    std::string list;
    for (const Module& module : modules) {
        const std::string info = infoOf(module);
        list += be(module.id, 2) + be(module.size, 4) + be(0, 1) + be(info.size(), 1) + info;
    }
    return message(
        0x3B, 0x1002, 0,
        be(carousel, 4) + be(kBlockSize, 2) + std::string(12, '\0') + be(modules.size(), 2) + list + be(0, 2));
}

std::string block(std::uint32_t carousel, std::uint16_t module, const std::string& bytes) {
    return message(0x3C, 0x1003, carousel, be(module, 2) + be(0, 1) + be(0xFF, 1) + be(0, 2) + bytes);
}

std::string gateway(std::uint32_t carousel, std::uint16_t module) {
    const std::string location = be(carousel, 4) + be(module, 2) + be(0x0100, 2) + be(1, 1) + "k";
    const std::string profile = be(0, 1) + be(1, 1) + be(0x49534F50, 4) + be(location.size(), 1) + location;
    const std::string reference =
        be(4, 4) + std::string("srg\0", 4) + be(1, 4) + be(0x49534F06, 4) + be(profile.size(), 4) + profile + be(0, 4);
    return message(0x3B, 0x1006, 0, std::string(20, '\xFF') + be(0, 2) + be(reference.size(), 2) + reference);
}

/// Modules of the largest size that is read.
std::vector<Module> largeModules(std::size_t count) {
    std::vector<Module> modules;
    for (std::size_t index = 0; index < count; ++index) {
        modules.push_back({static_cast<std::uint16_t>(index), 16U << 20U});
    }
    return modules;
}

std::vector<std::string> textsOf(const std::vector<dvbshell::CarouselNews>& news) {
    std::vector<std::string> texts;
    for (const dvbshell::CarouselNews& each : news) {
        texts.push_back(each.text);
    }
    return texts;
}

}  // namespace

TEST(ACarousel, IsCompleteWithoutTheBytesOfEmptyAndOfTooLargeModules) {
    CarouselReader reader;
    reader.add(gateway(5, 1));
    reader.add(announcing(5, {{1, 3}, {2, 0}, {3, (16U << 20U) + 1}}));
    EXPECT_EQ(reader.progress(), "2 of 3 modules have arrived");
    EXPECT_FALSE(reader.isComplete());
    reader.add(block(5, 1, "abc"));
    EXPECT_TRUE(reader.isComplete());
}

TEST(ACarousel, DoesNotWaitForModulesThatAreCompressedMoreThanAHundredTimes) {
    CarouselReader reader;
    reader.add(announcing(5, {{1, 100, 10099}, {2, 100, 10100}, {3, 16U << 20U, (16U << 20U) + 1}}));
    EXPECT_EQ(reader.progress(), "2 of 3 modules have arrived");
}

TEST(ACarousel, KeepsItsGatewayBesideAnother) {
    CarouselReader reader;
    EXPECT_THAT(textsOf(reader.add(gateway(5, 1))), ElementsAre("carousel 5  service gateway in module 1"));
    EXPECT_THAT(textsOf(reader.add(gateway(6, 2))), ElementsAre("carousel 6  service gateway in module 2"));
    EXPECT_TRUE(reader.add(gateway(5, 1)).empty());
    reader.add(announcing(5, {{1, 3}}));
    reader.add(block(5, 1, "abc"));
    EXPECT_FALSE(reader.isComplete()) << "nothing of carousel 6 has come";
    reader.add(announcing(6, {{2, 3}}));
    reader.add(block(6, 2, "abc"));
    EXPECT_TRUE(reader.isComplete());
    EXPECT_THAT(reader.paths(), ElementsAre("carousel 5  /  has not arrived", "carousel 6  /  has not arrived"));
}

TEST(ACarousel, SaysOnceThatItIsLargerThanIsRead) {
    CarouselReader reader;
    const std::vector<std::string> lines = textsOf(reader.add(announcing(5, largeModules(20))));
    ASSERT_FALSE(lines.empty());
    EXPECT_LT(lines.size(), 20U);
    EXPECT_EQ(lines.back(), "modules are left out: at most 4096 are read, of 128 MiB in all");
    EXPECT_TRUE(reader.add(announcing(5, largeModules(20))).empty());
}

TEST(ACarousel, RefusesABlockThatIsLargerThanAnnounced) {
    CarouselReader reader;
    reader.add(announcing(5, {{1, 3}}));
    reader.add(block(5, 1, std::string(kBlockSize + 1, 'x')));
    EXPECT_EQ(reader.progress(), "0 of 1 modules have arrived");
}
