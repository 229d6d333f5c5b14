// Tests of carousels: the folders that they come from, and the order in which their sections are sent.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "folders.h"
#include "object_carousel.h"
#include "run_directory.h"
#include "si/download.h"

namespace {

using tsmake::Carousel;
using tsmake::CarouselSender;
using tsmake::Multiplex;

constexpr std::uint64_t kSecond = 27000000;

Carousel carouselOf(std::map<std::string, std::string> files) {
    Carousel carousel;
    carousel.tag = 32;
    carousel.pid = 500;
    carousel.isCompressed = false;
    carousel.versions = {{0, "", std::move(files)}};
    return carousel;
}

Multiplex multiplexWith(const std::string& folder) {
    Carousel carousel = carouselOf({});
    carousel.versions[0].folder = folder;
    Multiplex multiplex;
    multiplex.services.emplace_back();
    multiplex.services[0].carousels = {carousel};
    return multiplex;
}

/// "DSI", "DII" or "module/block version" of the next sections.
std::vector<std::string> next(CarouselSender& sender, std::uint64_t ticks, std::size_t count) {
    std::vector<std::string> names;
    while (names.size() < count) {
        const CarouselSender::Unit unit = sender.next(ticks);
        const auto block = si::downloadBlock(unit.section);
        names.push_back(unit.section.empty()               ? "nothing"
                        : si::serviceGateway(unit.section) ? "DSI"
                        : si::downloadInfo(unit.section)
                            ? "DII"
                            : std::to_string(block->moduleId) + "/" + std::to_string(block->number) + " v" +
                                  std::to_string(block->moduleVersion));
    }
    return names;
}

}  // namespace

TEST(TheFolderOfACarousel, IsReadWithItsFolders) {
    const std::filesystem::path base = OwnRunDirectory::instance().path();
    std::filesystem::create_directories(base / "site/deep");
    std::ofstream(base / "site/a.txt") << "first";
    std::ofstream(base / "site/deep/b.txt") << "second";
    std::filesystem::create_symlink(base / "site/a.txt", base / "site/link");
    Multiplex multiplex = multiplexWith("site");
    std::string error;
    ASSERT_TRUE(tsmake::readFolders(multiplex, base.string(), error)) << error;
    EXPECT_THAT(multiplex.services[0].carousels[0].versions[0].files,
                testing::ElementsAre(testing::Pair("a.txt", "first"), testing::Pair("deep/b.txt", "second")));
}

TEST(TheFolderOfACarousel, MustBeThere) {
    Multiplex multiplex = multiplexWith("none");
    std::string error;
    EXPECT_FALSE(tsmake::readFolders(multiplex, "/nowhere", error));
    EXPECT_EQ(error, "cannot read /nowhere/none: No such file or directory");
}

TEST(TheFolderOfACarousel, HasEachFileWithAContentType) {
    const std::filesystem::path base = OwnRunDirectory::instance().path();
    std::filesystem::create_directories(base / "typed");
    std::ofstream(base / "typed/a.html") << "first";
    Multiplex multiplex = multiplexWith("typed");
    Carousel& carousel = multiplex.services[0].carousels[0];
    carousel.id = 7;
    carousel.contentTypes = {{"a.html", "text/html"}};
    std::string error;
    EXPECT_TRUE(tsmake::readFolders(multiplex, base.string(), error)) << error;
    carousel.contentTypes = {{"a.htm", "text/html"}};
    EXPECT_FALSE(tsmake::readFolders(multiplex, base.string(), error));
    EXPECT_EQ(error, "contentTypes: carousel 7 has no file a.htm");
}

TEST(ASentCarousel, NamesTheContentTypesOfFiles) {
    Carousel carousel = carouselOf({{"a", "first"}, {"b", "second"}});
    carousel.contentTypes = {{"b", "text/plain"}};
    std::size_t cost = 0;
    const std::string module = tsmake::carouselStates(carousel).at(0).modules.at(1).bytes;
    const auto objects =
        si::carouselObjects({reinterpret_cast<const std::uint8_t*>(module.data()), module.size()}, 10000, cost);
    ASSERT_TRUE(objects);
    ASSERT_EQ(objects->size(), 2U);
    EXPECT_EQ(objects->at(0).contentType, "");
    EXPECT_EQ(objects->at(1).contentType, "text/plain");
}

TEST(ASentCarousel, BeginsEachCycleWithItsControlMessages) {
    const Carousel carousel = carouselOf({{"a", std::string(5000, 'a')}});
    CarouselSender sender(carousel);
    EXPECT_THAT(next(sender, 0, 7), testing::ElementsAre("DSI", "DII", "1/0 v0", "2/0 v0", "2/1 v0", "DSI", "DII"));
}

TEST(ASentCarousel, RepeatsItsControlMessagesFourTimesASecond) {
    Carousel carousel = carouselOf({{"a", std::string(20000, 'a')}});
    carousel.blockSize = 1000;
    CarouselSender sender(carousel);
    EXPECT_THAT(next(sender, 0, 4), testing::ElementsAre("DSI", "DII", "1/0 v0", "2/0 v0"));
    EXPECT_THAT(next(sender, kSecond / 4, 3), testing::ElementsAre("DSI", "DII", "2/1 v0"));
    EXPECT_THAT(next(sender, kSecond / 4, 2), testing::ElementsAre("2/2 v0", "2/3 v0"));
}

TEST(ASentCarousel, ChangesToItsNextVersionAtOnce) {
    Carousel carousel = carouselOf({{"a", std::string(5000, 'a')}, {"b", std::string(70000, 'b')}});
    carousel.versions.push_back({2, "", carousel.versions[0].files});
    carousel.versions[1].files["a"] = "another";
    carousel.versions[0].second = 1;
    CarouselSender sender(carousel);
    EXPECT_THAT(next(sender, 0, 2), testing::ElementsAre("nothing", "nothing"));
    EXPECT_THAT(next(sender, kSecond, 4), testing::ElementsAre("DSI", "DII", "1/0 v0", "2/0 v0"));
    EXPECT_THAT(next(sender, 2 * kSecond, 5), testing::ElementsAre("DSI", "DII", "1/0 v0", "2/0 v1", "3/0 v0"))
        << "only the module with the changed file has a new version";
}

TEST(ASentCarousel, MayHaveItsBlocksOnAnotherPid) {
    Carousel carousel = carouselOf({{"a", "a"}});
    carousel.blockTag = 33;
    carousel.blockPid = 501;
    CarouselSender sender(carousel);
    EXPECT_EQ(sender.next(0).pid, 500);
    EXPECT_EQ(sender.next(0).pid, 500);
    EXPECT_EQ(sender.next(0).pid, 501);
}

TEST(ASentCarousel, IsRefusedIfAModuleHasTooManyBlocks) {
    Carousel carousel = carouselOf({{"a", std::string(70000, 'a')}});
    carousel.blockSize = 1;
    EXPECT_THROW(CarouselSender{carousel}, std::length_error);
}

TEST(ASentCarousel, HasAsManyListsAsItsModulesNeed) {
    std::map<std::string, std::string> files;
    for (int index = 0; index < 200; ++index) {
        files["file" + std::to_string(index)] = "content";
    }
    Carousel carousel = carouselOf(files);
    carousel.moduleSize = 1;
    const tsmake::CarouselState state = tsmake::carouselStates(carousel).at(0);
    EXPECT_EQ(state.modules.size(), 201U);
    ASSERT_EQ(state.control.size(), 4U);
    EXPECT_EQ(si::identificationOf(si::downloadInfo(state.control[3])->transactionId), 6);
}
