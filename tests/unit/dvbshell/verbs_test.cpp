// The verbs on a recorded library: their descriptions, their arguments, and what they print.
#include "verbs.h"

#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <thread>

#include "command_line/help.h"
#include "eventually.h"
#include "json_printer.h"
#include "prompt.h"
#include "recorded_session.h"
#include "tables.h"
#include "valid_json.h"
#include "words.h"

namespace {

using namespace dvbshell;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

const tsmake::Multiplex kSample = tsmake::sampleMultiplex();

std::string asText(const tsmake::Section& section) {
    return {section.begin(), section.end()};
}

std::vector<std::string> wordsOf(const std::string& line) {
    std::vector<std::string> words = split(line, ' ');
    words.erase(std::remove(words.begin(), words.end(), ""), words.end());
    return words;
}

/// The reason why a command line is refused; empty if it is right.
std::string errorOf(const std::string& line, Place place = Place::commandLine) {
    std::string error;
    const auto arguments = command_line::parse(describe(place), wordsOf(line), error);
    if (arguments) {
        prepare(place, *arguments, error);
    }
    return error;
}

tsmake::Service withEvents() {
    tsmake::Service service = kSample.services[0];
    service.streamEvents.tag = 7;
    service.streamEvents.pid = 300;
    service.streamEvents.object = "app/events";
    service.streamEvents.carouselPid = 301;
    service.streamEvents.events = {{1, "start", "hello", 0}, {2, "stop", "\x01\x02", 1}};
    return service;
}

class AVerb : public ARecordedSession {
protected:
    AVerb() {
        session.atPrompt = true;
        filters.broadcast[0x00] = {asText(tsmake::patSection(kSample))};
        filters.broadcast[0x10] = {asText(tsmake::nitSection(kSample))};
        filters.broadcast[0x11] = {asText(tsmake::sdtSection(kSample))};
    }
    int run(const std::string& line) {
        int result = -1;
        EXPECT_TRUE(runLine(session, line, result));
        return result;
    }
};

}  // namespace

TEST(TheVerbs, AreTheSameAtThePromptAndOnTheCommandLine) {
    const auto namesOf = [](Place place) {
        std::set<std::string> names;
        for (const command_line::Verb* const verb : command_line::allVerbs(describe(place))) {
            EXPECT_TRUE(names.insert(verb->name).second) << verb->name << " is there twice";
        }
        return names;
    };
    std::set<std::string> ofPrompt = namesOf(Place::prompt);
    std::set<std::string> ofCommandLine = namesOf(Place::commandLine);
    EXPECT_EQ(ofPrompt.erase("help") + ofPrompt.erase("quit") + ofCommandLine.erase("demo"), 3U);
    EXPECT_EQ(ofPrompt, ofCommandLine);
}

TEST(TheVerbs, HaveAnExampleThatIsRight) {
    for (const Place place : {Place::prompt, Place::commandLine}) {
        for (const VerbGroup& group : verbsOf(place)) {
            for (const Verb& verb : group.verbs) {
                const std::string example = verb.description.example;
                EXPECT_THAT(example, StartsWith(verb.description.name));
                EXPECT_FALSE(verb.description.help.empty()) << verb.description.name;
                // Quotes are for the shell.
                if (example.find_first_of("'\"") == std::string::npos) {
                    EXPECT_EQ(errorOf(example, place), "") << example;
                }
            }
        }
    }
}

TEST(TheVerbs, NameAWrongArgumentAndItsRange) {
    EXPECT_EQ(errorOf("tune 1:2:70000"), "tune: \"1:2:70000\" is not ONID:TSID:SID, each from 0 to 65535");
    EXPECT_EQ(errorOf("tune 0x1:0x401:28106"), "");
    EXPECT_EQ(errorOf("tune"), "tune: ONID:TSID:SID is missing");
    EXPECT_EQ(errorOf("sections 8192"), "sections: PID: \"8192\" is not a number from 0 to 8191");
    EXPECT_EQ(errorOf("sections 18 --count x"), "sections: --count: \"x\" is not a number from 0 to 1000000000");
    EXPECT_EQ(errorOf("sections 18 --match 4e"), "sections: --match has 1 bytes, --mask 0");
    EXPECT_EQ(errorOf("sections 18 --mask 4"), "sections: --mask: \"4\" is not bytes in hexadecimal");
    EXPECT_EQ(errorOf("sections 18 --table 256"),
              "sections: --table: \"256\" is not ID or ID/MASK, each from 0 to 255");
    EXPECT_THAT(errorOf("--json sections 18 --hex"), StartsWith("sections: --hex prints no JSON"));
    EXPECT_EQ(errorOf("watch --table 0"), "--table is an option of sections");
    EXPECT_EQ(errorOf("pts -1"), "pts: PTS_REQUEST: \"-1\" is not a number from 0 to 4294967295");
    EXPECT_EQ(errorOf("stream-events 1:256"), "stream-events: TAG: \"256\" is not a number from 0 to 255");
    EXPECT_EQ(errorOf("carousel get"), "carousel get: PATH is missing");
    EXPECT_EQ(errorOf("carousel get one two"), "carousel get: SID: \"one\" is not a number from 0 to 65535");
    EXPECT_EQ(errorOf("carousel get 1 two three"), "carousel get: unexpected argument three");
    EXPECT_EQ(errorOf("carousel 1:2:3"), "carousel: \"1:2:3\" is not SID or SID:TAG");
    EXPECT_EQ(errorOf("frobnicate"), "unknown command frobnicate");
}

TEST(ThePrompt, HasHelpAsItsOnlyStandardOption) {
    const std::string help = command_line::helpText(describe(Place::prompt), 80);
    EXPECT_THAT(help, HasSubstr("--help"));
    EXPECT_THAT(help, testing::Not(HasSubstr("--version")));
    EXPECT_EQ(errorOf("--version", Place::prompt), "unknown option --version");
    EXPECT_EQ(errorOf("info --print-man", Place::prompt), "unknown option --print-man");
}

TEST_F(AVerb, SaysWhatIsWrongInTwoLines) {
    EXPECT_EQ(run("tune 1"), kUsageError);
    EXPECT_EQ(run("sections 1 --nonsense"), kUsageError);
    EXPECT_EQ(run("frobnicate"), kUsageError);
    EXPECT_EQ(run("pts 'x"), kUsageError);
    EXPECT_EQ(output.text(),
              "tune: \"1\" is not ONID:TSID:SID, each from 0 to 65535\ntry: help tune\n"
              "unknown option --nonsense\ntry: help sections\n"
              "unknown command frobnicate\ntry: help\n"
              "the single quote at character 5 is not closed\n");
}

TEST_F(AVerb, IsExplained) {
    EXPECT_EQ(run("help sections"), kDone);
    EXPECT_THAT(output.text(), StartsWith("usage: dvb> sections PID\n"));
    EXPECT_THAT(output.text(), HasSubstr("--table ID[/MASK]"));
    EXPECT_THAT(output.text(), HasSubstr("Example:\n  dvb> sections 0x12 --table 0x4E --count 2\n"));
    EXPECT_EQ(run("help nonsense"), kUsageError);
    EXPECT_THAT(output.text(), HasSubstr("unknown command nonsense; help lists all\n"));
}

TEST_F(AVerb, SaysAtOnceThatThereIsNoService) {
    api.result = -1;
    EXPECT_EQ(run("sections 0"), kNoService);
    EXPECT_EQ(run("tune 1:2:3"), kNoService);
    EXPECT_EQ(run("select 0"), kNoService);
    EXPECT_THAT(output.text(), HasSubstr("no DTV service answers"));
    EXPECT_THAT(output.text(), HasSubstr("; start one: dtvserviced --input FILE.ts\n"));
    EXPECT_TRUE(filters.calls.empty());
}

TEST_F(AVerb, ListsTheChannelsOfTheMultiplex) {
    EXPECT_EQ(run("channels"), kDone);
    EXPECT_EQ(output.text(),
              "1:1025:28106  Velmora One HD\n1:1025:28107  Velmora Zwei F\xC3\xB6hn\n"
              "1:1025:28108  Velmora \xCE\xA4\xCF\x81\xCE\xAF\xCE\xB1\n1:1025:28120  Velmora Radio\n");
    EXPECT_THAT(filters.calls, ElementsAre("startSection 0", "startSection 17", "startSection 16", "stopSection",
                                           "stopSection", "stopSection"));
}

TEST_F(AVerb, ListsChannelsWithoutNamesWhereNoSdtComes) {
    filters.broadcast[0x11].clear();
    EXPECT_EQ(run("channels --seconds 0"), kDone);
    EXPECT_THAT(output.text(), StartsWith("1:1025:28106  -\n"));
    EXPECT_THAT(output.text(), HasSubstr("channels: no complete SDT came in 0 s: names are missing\n"));
}

TEST_F(AVerb, FailsWithoutAPat) {
    filters.broadcast[0x00].clear();
    EXPECT_EQ(run("channels --seconds 0"), kFailed);
    EXPECT_EQ(output.text(), "channels: no complete PAT came in 0 s\n");
}

TEST_F(AVerb, DoesNotWaitForAServiceThatHasGoneToCloseItsFilters) {
    EXPECT_EQ(run("sections 0 --count 1"), kDone);
    EXPECT_THAT(filters.calls, ElementsAre("startSection 0", "stopSection"));
    filters.calls.clear();
    filters.broadcast.clear();
    // The service goes while the filter is open.
    filters.opened = [this] { api.result = -32; };
    EXPECT_EQ(run("sections 0 --seconds 60"), kNoService);
    EXPECT_THAT(filters.calls, ElementsAre("startSection 0"));
    EXPECT_THAT(output.text(), HasSubstr("the DTV service has gone; lost: filter on PID 0\n"));
}

TEST_F(AVerb, DoesNotNameTheShellsOwnFiltersAsLost) {
    filters.broadcast.clear();
    filters.opened = [this] { api.result = -32; };
    EXPECT_EQ(run("channels --seconds 60"), kNoService);
    EXPECT_THAT(output.text(), HasSubstr("the DTV service has gone\n"));
}

TEST_F(AVerb, LeavesAFileAloneWhoseSectionsCannotCome) {
    const std::string path = testing::TempDir() + "kept_sections_" + std::to_string(getpid());
    std::ofstream(path) << "kept";
    filters.accepts = false;
    EXPECT_EQ(run("sections 0 --out " + path), kFailed);
    std::string kept;
    std::ifstream(path) >> kept;
    EXPECT_EQ(kept, "kept");
    std::remove(path.c_str());
}

TEST_F(AVerb, RefusesHexadecimalLinesAmongJson) {
    session.json = true;
    EXPECT_EQ(run("sections 0 --hex"), kUsageError);
    EXPECT_THAT(output.text(), StartsWith("--hex prints no JSON"));
}

TEST_F(AVerb, NamesTheChannelThatFailedAndTheOneThatStays) {
    api.tuned = [this](int) { host.listener->OnChannelChanged(false, 1, 2, 3); };
    EXPECT_EQ(run("tune 7:8:9"), kFailed);
    EXPECT_THAT(output.text(), HasSubstr("not tuned to 7:8:9: the DTV service has no such channel; 1:2:3 stays\n"));
    EXPECT_EQ(run("tune-numbers 12 7 8 10 0"), kFailed);
    EXPECT_THAT(output.text(), HasSubstr("not tuned to 7:8:10: "));
    EXPECT_THAT(output.text(), testing::Not(HasSubstr("done")));
}

TEST_F(AVerb, EndsWhenTheChannelIsPresented) {
    api.tuned = [this](int sid) { host.listener->OnChannelChanged(true, 65535, 8, static_cast<std::uint16_t>(sid)); };
    EXPECT_EQ(run("tune 7:8:9"), kDone);
    EXPECT_THAT(api.calls, testing::Contains("tuneToService(12, 7, 8, 9, 0)"));
}

TEST_F(AVerb, SaysSentOnlyWhenItIsKnown) {
    EXPECT_EQ(run("select 2"), kDone);
    EXPECT_EQ(run("listen"), kDone);
    EXPECT_EQ(run("ccid"), kDone);
    EXPECT_EQ(output.text(), "selectComponent  sent\naddListener  done\ngetCurrentCCID  ccid ccid:1:2:3\n");
}

TEST_F(AVerb, RemembersWhatStaysOpen) {
    run("osd-start 3");
    run("temi-start 1 5 0");
    EXPECT_THAT(output.text(), HasSubstr("startOSDDetection  result 0\n"));
    api.result = -32;
    EXPECT_TRUE(eventually([this] { return session.noteConnection(); }));
    EXPECT_THAT(output.text(), HasSubstr("the DTV service has gone; lost: OSD layer 3, TEMI timeline 1:5\n"));
}

TEST_F(AVerb, PrintsStreamEvents) {
    const tsmake::Service service = withEvents();
    filters.pmts[28106] = asText(tsmake::pmtSection(service));
    filters.broadcast[300] = {asText(tsmake::streamEventSection(service, 0)),
                              asText(tsmake::streamEventSection(service, 0)),
                              asText(tsmake::streamEventSection(service, 1))};
    EXPECT_EQ(run("stream-events 28106 --seconds 1"), kDone);
    EXPECT_THAT(output.text(), HasSubstr("pid 300, event_id 1, version_number "));
    EXPECT_THAT(output.text(), HasSubstr("data \"hello\"\n"));
    EXPECT_THAT(output.text(), HasSubstr("data 0102\n"));
    const std::string text = output.text();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2);
    EXPECT_EQ(run("stream-events 28106:9"), kFailed);
    EXPECT_THAT(output.text(), HasSubstr("service 28106 has no component with the tag 9\n"));
}

TEST_F(AVerb, ReportsInJsonWhatTheSchemaSays) {
    const tsmake::Service service = withEvents();
    filters.pmts[28106] = asText(tsmake::pmtSection(service));
    filters.broadcast[300] = {asText(tsmake::streamEventSection(service, 0))};
    JsonPrinter jsonPrinter(output.file());
    Session jsonSession(host, filters, queue, jsonPrinter);
    jsonSession.atPrompt = true;
    jsonSession.json = true;
    int result = 0;
    for (const char* const line : {"channels", "info", "stream-events 28106 --seconds 1"}) {
        EXPECT_TRUE(runLine(jsonSession, line, result));
        EXPECT_EQ(result, kDone) << line;
    }
    api.known = false;
    runLine(jsonSession, "info --seconds 0", result);
    EXPECT_EQ(result, kFailed);
    EXPECT_TRUE(isValidJson(output.text()));
    EXPECT_THAT(output.text(),
                HasSubstr(R"("event":"channel","onid":1,"tsid":1025,"sid":28106,"name":"Velmora One HD")"));
    EXPECT_THAT(output.text(), HasSubstr(R"("onid":65535,"tsid":65535,"sid":65535,"name":"")"));
    EXPECT_THAT(output.text(), HasSubstr(R"("data":"68656C6C6F")"));
}

TEST_F(AVerb, ShowsOnceWhatTheServiceSaysTwiceToABrowserThatStarts) {
    const auto sendAll = [this] {
        host.listener->onOSDStateChanged(1, 1);
        host.listener->onPtsNotify(1, 2);
    };
    sendAll();
    api.notified = sendAll;
    EXPECT_EQ(run("watch --seconds 0"), kDone);
    EXPECT_EQ(run("watch --seconds 0"), kDone);
    const std::string text = output.text();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2) << text;
    EXPECT_THAT(api.calls, testing::Contains("notifyMwhbStart()").Times(1));
}

TEST_F(AVerb, EndsWhereEventsNeverPause) {
    std::atomic<bool> ended{false};
    std::thread timeline([&] {
        for (std::uint32_t tick = 0; !ended; ++tick) {
            host.listener->onPtsNotify(tick, 0);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    run("ait --stored --seconds 0");
    ended = true;
    timeline.join();
    EXPECT_THAT(output.text(), HasSubstr("pts "));
}

TEST_F(AVerb, EndsOnCtrlC) {
    catchInterrupts();
    std::raise(SIGINT);
    EXPECT_EQ(run("watch"), kDone);
    for (const char* const line :
         {"sections 0x100", "pmt 1", "channels", "stream-events 1", "ait 1:2:3", "tune 1:2:3"}) {
        EXPECT_EQ(run(line), kFailed) << line;
    }
    clearInterrupt();
    EXPECT_EQ(output.text(), "") << "the user knows that nothing came";
}
