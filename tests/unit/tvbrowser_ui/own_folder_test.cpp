// A process's own folder, and what killed processes have left.
#include "own_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>

#include "run_directory.h"

namespace tvbrowser {

namespace {

namespace fs = std::filesystem;

class AnOwnFolder : public testing::Test {
protected:
    AnOwnFolder() {
        fs::create_directories(parent);
        setenv("TMPDIR", parent.c_str(), 1);
    }
    /// A folder with a file, as a killed process leaves it.
    std::string leave(const std::string& name) const {
        fs::create_directories(parent / name / "deep");
        std::ofstream(parent / name / "deep/file") << "left";
        return (parent / name).string();
    }

    const fs::path parent = fs::path(OwnRunDirectory::instance().path()) / "temporary";
};

TEST_F(AnOwnFolder, IsRemovedWithItsFiles) {
    std::string path;
    {
        const OwnFolder folder;
        path = folder.path();
        EXPECT_TRUE(fs::is_directory(path));
        EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_all);
        fs::create_directories(path + "/deep");
        std::ofstream(path + "/deep/file") << "text";
    }
    EXPECT_FALSE(fs::exists(path));
}

TEST_F(AnOwnFolder, OfAKilledProcessIsRemovedByTheNextOne) {
    const std::string left = leave("tvbrowser-data-abcdef");
    const OwnFolder folder;
    EXPECT_FALSE(fs::exists(left));
    EXPECT_TRUE(fs::exists(folder.path()));
}

TEST_F(AnOwnFolder, OfALivingProcessStays) {
    const OwnFolder first;
    const OwnFolder second;
    EXPECT_NE(first.path(), second.path());
    EXPECT_TRUE(fs::exists(first.path()));
}

TEST_F(AnOwnFolder, RemovesNothingElse) {
    const std::string other = leave("tvbrowser-abcdef");
    const std::string aim = leave("elsewhere");
    fs::create_directory_symlink(aim, parent / "tvbrowser-data-a-link");
    std::ofstream(parent / "tvbrowser-data-a-file") << "text";
    const OwnFolder folder;
    EXPECT_TRUE(fs::exists(other + "/deep/file"));
    EXPECT_TRUE(fs::exists(aim + "/deep/file"));
    EXPECT_TRUE(fs::is_symlink(parent / "tvbrowser-data-a-link"));
    EXPECT_TRUE(fs::exists(parent / "tvbrowser-data-a-file"));
}

TEST_F(AnOwnFolder, NeedsAFolderToBeIn) {
    setenv("TMPDIR", "/proc", 1);
    EXPECT_THROW(OwnFolder(), std::runtime_error);
}

}  // namespace

}  // namespace tvbrowser
