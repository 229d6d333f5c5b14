// The shell as a program, and the demonstration.
#include "browser_fixture.h"

TEST(TheShell, SaysWhichLibraryItCannotLoadAndWhy) {
    ChildProcess shell(DVBSHELL, {"--library", "/nonexistent.so", "watch"}, "shell");
    EXPECT_EQ(shell.wait(), 1);
    EXPECT_THAT(shell.output(), testing::StartsWith("dvbshell: cannot load /nonexistent.so: "));
}

TEST(TheShell, NamesAWrongArgumentAndItsRange) {
    ChildProcess shell(DVBSHELL, {"tune", "1:2:70000"}, "shell");
    EXPECT_EQ(shell.wait(), 2);
    EXPECT_THAT(shell.output(), testing::HasSubstr("\"1:2:70000\" is not ONID:TSID:SID, each from 0 to 65535"));
}

TEST(TheShell, FailsWhereATuneFails) {
    const ServiceProcess service;
    ChildProcess shell(DVBSHELL, {"--seconds", "1", "tune", "1:1025:9"}, "shell");
    EXPECT_EQ(shell.wait(), 1);
    EXPECT_THAT(shell.output(), testing::HasSubstr("not tuned to 1:1025:9"));
}

TEST(TheDemonstration, SeesEverythingOfTheSample) {
    ChildProcess demo(DEMO_SCRIPT, {BUILD_FOLDER, SAMPLE_FILE}, "demo");
    EXPECT_EQ(demo.wait(), 0) << demo.output();
    const std::string output = demo.output();
    for (const char* const expected :
         {"ccid:1:1025:28106  started", "ccid:1:1025:28107  started", "AIT (HbbTV)", "Morning on the Lake",
          "2026-01-01 09:00-10:00 UTC", "organisation_id 400 (0x190), application_id 1 (0x1)  AUTOSTART  Red Button",
          "http://hbbtv.one.example/redbutton/index.html?lang=en", "Velmora Zwei Föhn", "all arrived"}) {
        EXPECT_THAT(output, testing::HasSubstr(expected));
    }
}

TEST(TheDemonstration, EndsPromptlyOnABroadcastWithoutAPat) {
    const std::string path = kRunDirectory + "/nopat.ts";
    std::ofstream file(path, std::ios::binary);
    std::string packet(188, '\xFF');
    packet[0] = 0x47;
    packet[1] = 0x01;
    packet[2] = 0x00;
    packet[3] = 0x10;
    for (int count = 0; count < 100; ++count) {
        file << packet;
    }
    file.close();
    ChildProcess demo(DEMO_SCRIPT, {BUILD_FOLDER, path}, "demo");
    EXPECT_EQ(demo.wait(), 1);
    EXPECT_THAT(demo.output(), testing::HasSubstr("there is no PAT in the file"));
}
