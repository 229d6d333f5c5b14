// Records of files.
#include "recorded_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <stdexcept>

#include "run_directory.h"
#include "some_seen.h"

namespace {

class RecordedFiles : public testing::Test {
protected:
    static std::string pathOf(const std::string& name) { return OwnRunDirectory::instance().path() + "/" + name; }
    /// A file with a record at each of the times.
    static std::string file(const std::string& name, const std::vector<std::uint64_t>& times) {
        std::ofstream written(pathOf(name), std::ios::binary);
        written << bus::pcapngStart();
        for (const std::uint64_t time : times) {
            bus::Record record = aRecord(bus::Kind::connected);
            record.time = time;
            record.text = name;
            written << bus::pcapngBlock(record);
        }
        return pathOf(name);
    }
    void read(const std::vector<std::string>& paths) {
        dtvmon::readFiles(
            paths, [this](const std::string& problem) { problems.push_back(problem); },
            [this](const bus::Record& record) { seen.push_back(record.text + std::to_string(record.time)); });
    }

    std::vector<std::string> seen;
    std::vector<std::string> problems;
};

}  // namespace

TEST_F(RecordedFiles, AreReadInTheOrderOfTheirTimes) {
    read({file("a", {1, 4, 5}), file("b", {2, 3, 4, 9}), file("none", {})});
    EXPECT_THAT(seen, testing::ElementsAre("a1", "b2", "b3", "a4", "b4", "a5", "b9"));
    EXPECT_THAT(problems, testing::IsEmpty());
}

TEST_F(RecordedFiles, KeepTheOrderOfEachFile) {
    read({file("a", {5, 1}), file("b", {2})});
    EXPECT_THAT(seen, testing::ElementsAre("b2", "a5", "a1"));
}

TEST_F(RecordedFiles, AreReadBesideADamagedOne) {
    const std::string damaged = file("damaged", {1, 3});
    std::ofstream(damaged, std::ios::app) << "more";
    read({damaged, file("b", {2})});
    EXPECT_THAT(seen, testing::ElementsAre("damaged1", "b2", "damaged3"));
    EXPECT_THAT(problems, testing::ElementsAre(testing::MatchesRegex(
                              damaged + ": at byte [0-9]+: the file ends within a block, after 4 bytes of it")));
}

TEST_F(RecordedFiles, MustBeThere) {
    EXPECT_THROW(read({"/nonexistent/bus.pcapng"}), std::runtime_error);
    EXPECT_THROW(read({"/"}), std::runtime_error);
}
