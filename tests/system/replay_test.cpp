// Sessions of real browsers, recorded and replayed: the browser hears the same.
#include <nlohmann/json.hpp>
#include <regex>

#include "browser_fixture.h"
#include "recorded_bus.h"
#include "section_filters.h"

namespace {

using testing::ElementsAreArray;
using testing::HasSubstr;

constexpr std::size_t kSections = 3;
const std::string kFile = kRunDirectory + "/bus.pcapng";

/// Keeps the first sections. Never deleted, because a section may still arrive.
class FirstSections final : public velmora::dtv::SectionFilterClient {
public:
    void onSectionData(const std::string& session, unsigned int pid, const unsigned char* data,
                       unsigned int length) override {
        const locks::Lock lock(mutex);
        if (sections.size() < kSections) {
            sections.push_back(session + " " + std::to_string(pid) + " " +
                               message_fields::hexadecimal({reinterpret_cast<const char*>(data), length}));
        }
    }
    std::vector<std::string> taken() {
        const locks::Lock lock(mutex);
        return sections;
    }

private:
    std::mutex mutex;
    std::vector<std::string> sections GUARDED_BY(mutex);
};

class ARecordedSession : public ABrowser {
protected:
    /// What a listener and the client of a filter were told.
    struct Heard {
        std::vector<std::string> calls;
        std::vector<std::string> sections;
        int audioSource = -1;
    };

    /// Records the session of a browser on the sample broadcast.
    Heard recorded() {
        const ServiceProcess service;
        EXPECT_TRUE(eventually([this] { return api->startOSDDetection(1) == 0; }));
        RecordedBus bus(kFile);
        Heard heard = session("recorded-filter", 0);
        EXPECT_TRUE(bus.comesToHave("onOSDStateChanged  layer 78"));
        bus.end();
        return heard;
    }
    Heard replayed(const std::vector<std::string>& options = {}) {
        std::vector<std::string> arguments = {"--replay", kFile};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const ServiceProcess service(arguments);
        Heard heard = session("another-filter", 1);
        EXPECT_THAT(service.log(), testing::Not(HasSubstr("the recording does not have")));
        EXPECT_THAT(service.log(), testing::Not(HasSubstr("has not sent")));
        return heard;
    }

private:
    /// Notes events until one of them says this.
    void hearUntil(Heard& heard, const std::string& text) {
        const auto end = dvbshell::Clock::now() + std::chrono::seconds(20);
        while (const std::optional<Event> event = queue.take(end)) {
            heard.calls.push_back(event->name + " " + message_fields::text(dvbshell::valuesOf(*event)) + " " +
                                  message_fields::hexadecimal(event->section));
            if (heard.calls.back().find(text) != std::string::npos) {
                return;
            }
        }
        ADD_FAILURE() << "not heard: " << text;
    }
    /// The browser's part, from the first answer to its last.
    Heard session(const std::string& filterName, int round) {
        Heard heard;
        EXPECT_TRUE(eventually([this] { return api->startOSDDetection(77) == 0; })) << round;
        hearUntil(heard, "layer 77");
        heard.calls.clear();
        tune(28107);
        hearUntil(heard, "onAITSectionUpdated");
        FirstSections& client = dvbshell::forLife(new FirstSections);
        const unsigned char match = 0x4E;
        const unsigned char mask = 0xFF;
        constexpr unsigned int kEitPid = 18;
        EXPECT_TRUE(sectionFilters().startSection(&client, filterName, kEitPid, &match, &mask, 1));
        EXPECT_TRUE(eventually([&client] { return client.taken().size() == kSections; }));
        EXPECT_TRUE(sectionFilters().stopSection(&client, filterName));
        heard.sections = client.taken();
        for (std::string& section : heard.sections) {
            section = std::regex_replace(section, std::regex(filterName), "filter");
        }
        heard.audioSource = api->setAudioSource("broadcast");
        tune(28106);
        hearUntil(heard, "onAITSectionUpdated");
        api->startOSDDetection(78);
        hearUntil(heard, "layer 78");
        return heard;
    }
};

/// The lines of dvbshell without their times.
std::string withoutTimes(const std::string& output) {
    return std::regex_replace(output, std::regex(R"("time":[0-9.]+,?)"), "");
}

std::string outputOf(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"--library", LIBRARY_FILE, "--json"});
    ChildProcess shell(DVBSHELL, arguments, "shell");
    shell.wait();
    return withoutTimes(shell.output());
}

/// Records these calls of dvbshell one after the other on the sample broadcast, and returns what each showed.
std::vector<std::string> recordedShells(const std::vector<std::vector<std::string>>& sessions) {
    const ServiceProcess service;
    EXPECT_TRUE(eventually([] { return outputOf({"info", "--seconds", "0"}).find("28106") != std::string::npos; }));
    RecordedBus bus(kFile);
    std::vector<std::string> shown;
    for (const std::vector<std::string>& session : sessions) {
        shown.push_back(outputOf(session));
    }
    EXPECT_TRUE(bus.hasSeenAllGo(sessions.size())) << bus.text();
    bus.end();
    return shown;
}

/// What a recording has of a browser in one direction, "->" or "<-": operations, values and their bytes.
std::vector<std::string> recordsOf(const RecordedFile& file, const std::string& browser, const std::string& direction) {
    std::vector<std::string> records;
    bool isWanted = false;
    std::istringstream lines(file.text({"--bytes", "--browser", browser}));
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("    ", 0) == 0 && isWanted) {
            records.back() += line;
        } else if (line.rfind("    ", 0) != 0) {
            const std::string record = line.substr(line.find("] ") + 2);
            isWanted = record.rfind(direction, 0) == 0;
            records.insert(records.end(), isWanted ? 1 : 0, record);
        }
    }
    return records;
}

/// The numbers of the browsers in the recording, as the service says them.
std::vector<std::string> recordedBrowsers() {
    const ServiceProcess service({"--replay", kFile});
    const std::string output = service.output();
    const std::regex row("recorded browser ([0-9]+):");
    std::vector<std::string> numbers;
    for (std::sregex_iterator found(output.begin(), output.end(), row), end; found != end; ++found) {
        numbers.push_back((*found)[1]);
    }
    return numbers;
}

}  // namespace

TEST_F(ARecordedSession, IsHeardAgainByTheLibrarysListenerAndItsFilter) {
    const Heard first = recorded();
    ASSERT_THAT(first.calls, testing::SizeIs(testing::Gt(20U)));
    ASSERT_THAT(first.sections, testing::SizeIs(kSections));
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{}, std::vector<std::string>{"--replay-fast", "--replay-wait", "20"}}) {
        const Heard again = replayed(options);
        EXPECT_THAT(again.calls, ElementsAreArray(first.calls));
        EXPECT_THAT(again.sections, ElementsAreArray(first.sections));
        EXPECT_EQ(again.audioSource, first.audioSource);
    }
}

TEST(AReplayedRecording, IsShownAgainByTheShell) {
    const std::vector<std::vector<std::string>> sessions = {{"sections", "0x12", "--table", "0x4E", "--count", "2"},
                                                            {"--seconds", "3", "tune", "1:1025:28107"}};
    const std::vector<std::string> shown = recordedShells(sessions);
    EXPECT_THAT(shown[0], HasSubstr("EIT present/following"));
    EXPECT_THAT(shown[1], HasSubstr("onAITSectionUpdated"));
    const std::vector<std::string> browsers = recordedBrowsers();
    ASSERT_GE(browsers.size(), sessions.size());
    for (std::size_t index = 0; index < sessions.size(); ++index) {
        const std::string& browser = browsers[browsers.size() - sessions.size() + index];
        const ServiceProcess service({"--replay", kFile, "--replay-fast", "--replay-browser", browser});
        EXPECT_EQ(outputOf(sessions[index]), shown[index]);
        EXPECT_EQ(outputOf(sessions[index]), shown[index]) << "it begins again";
        EXPECT_THAT(service.log(), HasSubstr(" was replayed; the first one begins again"));
    }
}

TEST(AReplayedRecording, LooksToAMonitorAsItWasRecorded) {
    recordedShells({{"--seconds", "2", "tune", "1:1025:28107"}});
    const std::string recorded = recordedBrowsers().back();
    const ServiceProcess service({"--replay", kFile, "--replay-browser", recorded});
    const RecordedFile file{kRunDirectory + "/again.pcapng"};
    RecordedBus again(file.path);
    ChildProcess shell(DVBSHELL, {"--library", LIBRARY_FILE, "--seconds", "2", "tune", "1:1025:28107"}, "shell");
    nlohmann::json replay;
    ASSERT_TRUE(eventually([&replay] {
        ChildProcess status(DTVCTL, {"--json", "status"}, "status");
        EXPECT_EQ(status.wait(), 0);
        replay = nlohmann::json::parse(status.output())["replay"];
        return !replay["replayed_browsers"].empty() && replay["replayed_browsers"].back()["replayed_records"] > 0;
    }));
    EXPECT_EQ(replay["file"], kFile);
    const nlohmann::json place = replay["replayed_browsers"].back();
    EXPECT_EQ(std::to_string(place["recorded_browser"].get<int>()), recorded);
    shell.wait();
    EXPECT_TRUE(again.hasSeenAllGo(1)) << again.text();
    again.end();
    const std::string live = std::to_string(place["browser"].get<int>());
    for (const char* const direction : {"->", "<-"}) {
        const std::vector<std::string> expected = recordsOf({kFile}, recorded, direction);
        EXPECT_THAT(expected, testing::Not(testing::IsEmpty()));
        EXPECT_THAT(recordsOf(file, live, direction), ElementsAreArray(expected));
    }
}

TEST(AReplayedRecording, IsRefusedBesideInputs) {
    for (const std::vector<std::string>& options : {std::vector<std::string>{"--input", SAMPLE_FILE},
                                                    {"--list", SAMPLE_FILE},
                                                    {"--once"},
                                                    {"--bitrate", "1000000"}}) {
        std::vector<std::string> arguments = {"--replay", kFile};
        arguments.insert(arguments.end(), options.begin(), options.end());
        ChildProcess service(DTVSERVICED, arguments, "refused");
        EXPECT_EQ(service.wait(), 2);
        EXPECT_THAT(service.output(), HasSubstr("--replay and " + options[0] + " exclude each other"));
    }
    ChildProcess alone(DTVSERVICED, {"--input", SAMPLE_FILE, "--replay-fast"}, "refused");
    EXPECT_EQ(alone.wait(), 2);
    EXPECT_THAT(alone.output(), HasSubstr("--replay-fast needs --replay"));
}

TEST(AReplayedRecording, IsRefusedWhereItCannotBeRead) {
    ChildProcess missing(DTVSERVICED, {"--replay", kFile}, "refused");
    EXPECT_EQ(missing.wait(), 1);
    EXPECT_EQ(missing.output(), "dtvserviced: cannot open " + kFile + ": No such file or directory\n");
    ChildProcess broadcast(DTVSERVICED, {"--replay", SAMPLE_FILE}, "refused");
    EXPECT_EQ(broadcast.wait(), 1);
    EXPECT_THAT(broadcast.output(), HasSubstr("at byte 0: no pcapng file"));
}
