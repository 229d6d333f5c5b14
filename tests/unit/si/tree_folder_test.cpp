// Tests of trees that are written into folders.
#include "si/tree_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "made_carousels.h"

namespace {

using How = si::TreeWritten::How;
using si::TreeFolder;
using testing::ElementsAre;

constexpr std::size_t kEnough = std::size_t{1} << 30U;

class ATreeInAFolder : public testing::Test {
protected:
    ATreeInAFolder() {
        char name[] = "/tmp/dtv-tree-XXXXXX";
        base = mkdtemp(name);
        folder = base + "/tree";
    }
    ~ATreeInAFolder() override { std::filesystem::remove_all(base); }

    static std::shared_ptr<const si::CarouselTree> treeOf(const Files& files, bool isWhole = true) {
        const tsmake::CarouselState state = tsmake::carouselStates(carouselOf({files})).at(0);
        si::ObjectCarousel carousel;
        std::vector<tsmake::Section> sections = cycleOf(state);
        if (!isWhole) {
            sections.resize(sections.size() - 1);
        }
        feed(carousel, sections);
        feed(carousel, state.control);
        return carousel.tree();
    }
    si::TreeWritten write(const Files& files, std::size_t mostBytes = kEnough) {
        return si::writeTree(*treeOf(files),
                             {folder, mostBytes, nullptr, [this](auto& line) { told.push_back(line); }});
    }
    Files onDisk() const {
        Files files;
        for (const auto& each : std::filesystem::recursive_directory_iterator(base)) {
            if (each.is_regular_file()) {
                std::ifstream file(each.path(), std::ios::binary);
                files[each.path().string().substr(base.size() + 1)] = {std::istreambuf_iterator<char>(file), {}};
            }
        }
        return files;
    }

    std::string base;
    std::string folder;
    std::vector<std::string> told;
};

}  // namespace

TEST_F(ATreeInAFolder, HasEveryByte) {
    const std::string large = someBytes(1, 100000);
    const si::TreeWritten written = write({{"index.html", "<html>"}, {"empty", ""}, {"images/more/a.png", large}});
    EXPECT_EQ(written.how, How::whole);
    EXPECT_EQ(written.files, 3U);
    EXPECT_EQ(written.folders, 2U);
    EXPECT_EQ(written.leftOut, 0U);
    EXPECT_EQ(onDisk(), (Files{{"tree/index.html", "<html>"}, {"tree/empty", ""}, {"tree/images/more/a.png", large}}));
    EXPECT_THAT(told, testing::IsEmpty());
}

TEST_F(ATreeInAFolder, IsItsOwners) {
    write({{"images/a.png", "a"}});
    constexpr unsigned int kModeBits = 0777;
    struct stat found {};
    ASSERT_EQ(stat((folder + "/images").c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & kModeBits, 0700U);
    ASSERT_EQ(stat((folder + "/images/a.png").c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & kModeBits, 0600U);
}

TEST_F(ATreeInAFolder, StaysInIt) {
    const si::TreeWritten written = write({{"../../evil", "1"}, {"a", "2"}, {"A", "3"}});
    EXPECT_EQ(written.how, How::whole);
    EXPECT_EQ(onDisk(), (Files{{"tree/%2E%2E/%2E%2E/evil", "1"}, {"tree/a", "2"}, {"tree/A", "3"}}));
    EXPECT_THAT(told, testing::UnorderedElementsAre("/..: gets the name %2E%2E", "/../..: gets the name %2E%2E"));
}

TEST_F(ATreeInAFolder, FollowsNoLinkAndOverwritesNothing) {
    std::filesystem::create_directories(folder);
    std::filesystem::create_directories(base + "/other");
    std::filesystem::create_directory_symlink(base + "/other", folder + "/images");
    EXPECT_EQ(write({{"images/a.png", "a"}}).error, folder + "/images: File exists");
    std::filesystem::remove(folder + "/images");
    std::filesystem::create_symlink(base + "/target", folder + "/a.png");
    EXPECT_EQ(write({{"a.png", "a"}}).error, folder + "/a.png: File exists");
    EXPECT_TRUE(onDisk().empty());
}

TEST_F(ATreeInAFolder, LeavesOutWhatHasNotArrived) {
    const auto tree = treeOf({{"a", "1"}, {"b", std::string(5000, 'b')}}, false);
    const si::TreeWritten written =
        si::writeTree(*tree, {folder, kEnough, nullptr, [this](auto& line) { told.push_back(line); }});
    EXPECT_EQ(written.how, How::whole);
    EXPECT_EQ(written.leftOut, 1U);
    EXPECT_THAT(told, ElementsAre(testing::EndsWith(": has not arrived")));
}

TEST_F(ATreeInAFolder, EndsAtItsLimit) {
    const Files files = {{"a", std::string(1000, 'a')}, {"b", std::string(1000, 'b')}};
    constexpr std::size_t kNeeded = 2 * (TreeFolder::kPlaceOfAnEntry + 1000);
    EXPECT_EQ(write(files, kNeeded - 1).how, How::tooLarge);
    std::filesystem::remove_all(folder);
    const si::TreeWritten written = write(files, kNeeded);
    EXPECT_EQ(written.how, How::whole);
    EXPECT_EQ(written.bytes, kNeeded);
}

TEST_F(ATreeInAFolder, EndsWhenItMayNotGoOn) {
    int asked = 0;
    const si::TreeWritten written = si::writeTree(*treeOf({{"a", "1"}, {"b", "2"}, {"c", "3"}}),
                                                  {folder, kEnough, [&asked] { return ++asked < 3; }});
    EXPECT_EQ(written.how, How::stopped);
    EXPECT_EQ(written.files, 1U);
}

TEST_F(ATreeInAFolder, LeavesOutPathsThatAreTooLong) {
    std::string path;
    for (int depth = 0; depth < 20; ++depth) {
        path += std::string(150, 'd') + "/";
    }
    const si::TreeWritten written = write({{path + "file", "1"}, {"b", "2"}});
    EXPECT_EQ(written.how, How::whole);
    EXPECT_EQ(written.files, 1U);
    EXPECT_EQ(written.leftOut, 8U) << "seven folders of 151 bytes with the slash, and the file";
}

TEST_F(ATreeInAFolder, NamesWhatCannotBeWritten) {
    folder = base + "/not/there";
    EXPECT_EQ(write({{"a", "1"}}).error, folder + ": No such file or directory");
}
