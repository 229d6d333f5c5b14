// Recordings, good and bad ones.
#include "recording.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "in_a_child.h"
#include "recorded.h"
#include "run_directory.h"
#include "sanitizers.h"

using namespace recorded;
using dtvservice::readRecording;
using dtvservice::Recording;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

bus::Record connection(std::uint32_t browser, const std::string& program, const std::string& text = "") {
    bus::Record made = record(bus::Kind::connected, 0, browser);
    made.program = program;
    made.text = text;
    return made;
}

bus::Record of(std::uint32_t browser, bus::Record made) {
    made.browser = browser;
    return made;
}

bus::Record anEvent() {
    return message<messages::OnOSDStateChanged>(0, 1U, 2U);
}

std::string writtenTo(const std::string& name, const std::string& bytes) {
    std::string path = OwnRunDirectory::instance().path() + "/" + name;
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
}

std::string errorOf(const std::string& path) {
    std::string error;
    EXPECT_FALSE(readRecording(path, error));
    return error;
}

}  // namespace

TEST(ARecording, KeepsTheBrowsersApartInTheirOrder) {
    const Recording recording = recordingOf({connection(4, "one", "before"), of(5, anEvent()), connection(6, "six"),
                                             of(4, anEvent()), of(6, anEvent()), of(6, anEvent())});
    EXPECT_THAT(recording.problems, IsEmpty());
    ASSERT_EQ(recording.browsers.size(), 3U);
    EXPECT_EQ(recording.browsers[0].number, 4U);
    EXPECT_EQ(recording.browsers[0].program, "one");
    EXPECT_TRUE(recording.browsers[0].beganBefore);
    EXPECT_EQ(recording.browsers[1].number, 5U);
    EXPECT_TRUE(recording.browsers[1].beganBefore) << "its connection is not recorded";
    EXPECT_FALSE(recording.browsers[2].beganBefore);
    EXPECT_EQ(recording.browsers[2].steps.size(), 2U);
}

TEST(ARecording, BeginsAnewWithAConnectionOfTheSameNumber) {
    const Recording recording = recordingOf({connection(1, "one"), anEvent(), record(bus::Kind::disconnected, 0),
                                             connection(1, "two"), anEvent(), anEvent()});
    ASSERT_EQ(recording.browsers.size(), 2U);
    EXPECT_EQ(recording.browsers[0].steps.size(), 2U);
    EXPECT_EQ(recording.browsers[1].steps.size(), 2U);
}

TEST(ARecording, CountsWhatItsMonitorLost) {
    bus::Record lost = record(bus::Kind::lost, 0, 0);
    lost.count = 7;
    const Recording recording = recordingOf({anEvent(), lost, anEvent(), lost});
    EXPECT_EQ(recording.lost, 14U);
    EXPECT_EQ(recording.browsers.size(), 1U);
}

TEST(ARecording, LeavesOutWhatItCannotReadAndKeepsTheRest) {
    bus::Record unknown = anEvent();
    unknown.message = 0x28679999;
    bus::Record shortImage = anEvent();
    shortImage.bytes.resize(5);
    bus::Record turned = anEvent();
    turned.direction = bus::Direction::toService;
    const Recording recording =
        recordingOf({anEvent(), unknown, shortImage, turned, section(0, "one", std::string(4097, 'x')),
                     section(0, std::string(256, 'n'), "x"), anEvent()});
    EXPECT_THAT(recording.problems, ElementsAre("record 2: no message has the identifier 0x28679999",
                                                "record 3: onOSDStateChanged: message of 5 bytes, 8 expected",
                                                "record 4: onOSDStateChanged in the wrong direction",
                                                "record 5: a section of 4097 bytes, more than 4096",
                                                "record 6: a filter's name of 256 bytes, more than 255"));
    ASSERT_EQ(recording.browsers.size(), 1U);
    EXPECT_EQ(recording.browsers[0].steps.size(), 2U);
    EXPECT_EQ(recording.browsers[0].steps[1].record, 7U);
}

TEST(ARecording, CountsProblemsThatAreTooManyToTell) {
    bus::Record unknown = anEvent();
    unknown.message = 1;
    const Recording recording = recordingOf(std::vector<bus::Record>(50, unknown));
    EXPECT_EQ(recording.problems.size(), 20U);
    EXPECT_EQ(recording.moreProblems, 30U);
}

TEST(ARecording, IsPlayedAsFarAsItGoesIfItIsCutShort) {
    std::string bytes = fileOf({anEvent(), anEvent()});
    bytes.resize(bytes.size() - 10);
    std::string error;
    const std::optional<Recording> recording = readRecording(writtenTo("cut", bytes), error);
    ASSERT_TRUE(recording) << error;
    EXPECT_EQ(recording->browsers[0].steps.size(), 1U);
    ASSERT_EQ(recording->problems.size(), 1U);
    EXPECT_THAT(recording->problems[0], HasSubstr("at byte "));
}

TEST(ARecording, IsRefusedWhereThereIsNothingToPlay) {
    const std::string folder = OwnRunDirectory::instance().path();
    EXPECT_EQ(errorOf(folder + "/none"), "cannot open " + folder + "/none: No such file or directory");
    EXPECT_EQ(errorOf(folder), folder + " is not a regular file");
    EXPECT_EQ(errorOf(writtenTo("empty", bus::pcapngStart())), folder + "/empty: no browser is in the recording");
    EXPECT_THAT(errorOf(writtenTo("text", "hello hello hello hello")), HasSubstr("text: at byte 0: no pcapng file"));
    mkfifo((folder + "/fifo").c_str(), 0600);
    EXPECT_EQ(errorOf(folder + "/fifo"), folder + "/fifo is not a regular file") << "and is not waited for";
}

TEST(ARecording, IsRefusedAboveItsLimit) {
    const std::string path = writtenTo("long", fileOf({anEvent()}));
    ASSERT_EQ(truncate(path.c_str(), off_t{1} << 30), 0);
    EXPECT_EQ(errorOf(path),
              path +
                  " has 1073741824 bytes, more than 268435456; write what is needed of it to another file: dtvmon "
                  "--read FILE --browser N --write OTHER");
}

TEST(ARecording, IsRefusedWhereTheMemoryIsTooSmallForIt) {
    if (kIsSanitized || !std::vector<std::string> EMULATOR.empty()) {
        GTEST_SKIP() << "sanitizers and emulators need address space of their own";
    }
    const std::string path = writtenTo("large", fileOf(std::vector<bus::Record>(100000, anEvent())));
    EXPECT_EQ(inAChild([&path] {
                  std::ifstream pages("/proc/self/statm");
                  rlim_t used = 0;
                  pages >> used;
                  constexpr rlim_t kLittle = 4000000;
                  const rlimit little{used * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + kLittle, RLIM_INFINITY};
                  setrlimit(RLIMIT_AS, &little);
                  return errorOf(path) == path + ": there is not enough memory for the recording" ? 0 : 1;
              }),
              0);
}

TEST(ARecording, OfAnotherLinkTypeIsRefused) {
    std::string bytes = bus::pcapngStart();
    const std::size_t at = bytes.find(std::string("\x93\x00", 2));
    ASSERT_NE(at, std::string::npos);
    bytes[at] = 1;
    bytes += bus::pcapngBlock(anEvent());
    EXPECT_THAT(errorOf(writtenTo("ethernet", bytes)), HasSubstr("link type"));
}
