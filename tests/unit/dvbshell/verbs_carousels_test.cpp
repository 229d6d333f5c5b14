// Tests of the verbs of object carousels.
#include <filesystem>
#include <fstream>
#include <iterator>

#include "json_printer.h"
#include "made_carousels.h"
#include "prompt.h"
#include "recorded_session.h"
#include "tables.h"
#include "valid_json.h"

namespace {

using namespace dvbshell;
using testing::HasSubstr;
using testing::Not;

constexpr std::uint16_t kPid = 301;
constexpr std::uint16_t kOtherPid = 302;
constexpr unsigned int kPresentedSid = 3;  // of the recorded API

std::string asText(const tsmake::Section& section) {
    return {section.begin(), section.end()};
}

Files folder() {
    return {{"index.html", "<html>"}, {"images/logo.png", someBytes(1, 3000)}, {std::string(250, 'n'), "a long name"}};
}

/// The service 28106, whose carousels come as soon as a filter is open.
class ACarouselVerb : public ARecordedSession {
protected:
    ACarouselVerb() {
        session.atPrompt = true;
        char name[] = "/tmp/dtv-shell-XXXXXX";
        base = mkdtemp(name);
        tsmake::CarouselEvents events;
        events.path = "app/events";
        events.idsByName = {{"start", 1}, {"stop", 2}};
        first.eventObjects = {events};
        first.pid = kPid;
        service.carousels = {first};
    }
    ~ACarouselVerb() override { std::filesystem::remove_all(base); }

    /// Everything twice, as a carousel repeats itself.
    void broadcast(const tsmake::Carousel& carousel) {
        const std::vector<tsmake::Section> cycle = cycleOf(tsmake::carouselStates(carousel).at(0));
        for (int round = 0; round < 2; ++round) {
            for (const tsmake::Section& section : cycle) {
                filters.broadcast[carousel.pid].push_back(asText(section));
            }
        }
    }
    int run(const std::string& line) { return runIn(session, line); }
    int runIn(Session& in, const std::string& line) {
        filters.pmts[28106] = asText(tsmake::pmtSection(service));
        filters.pmts[kPresentedSid] = filters.pmts[28106];
        int result = -1;
        EXPECT_TRUE(runLine(in, line, result));
        return result;
    }
    std::string fileText(const std::string& name) const {
        std::ifstream file(base + "/" + name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::string base;
    tsmake::Carousel first = carouselOf({folder()});
    tsmake::Service service = [] {
        tsmake::Service made = tsmake::sampleMultiplex().services[0];
        made.pmtPid = 100;
        return made;
    }();
};

}  // namespace

TEST_F(ACarouselVerb, ShowsModulesAndThenTheTree) {
    broadcast(first);
    EXPECT_EQ(run("carousel 28106"), kDone);
    EXPECT_THAT(output.text(), HasSubstr("PID 301  carousel 7, service gateway in module 1\n"));
    EXPECT_THAT(output.text(), HasSubstr("PID 301  module 1, version 0: "));
    EXPECT_THAT(output.text(), HasSubstr(" bytes  (1 of "));
    EXPECT_THAT(output.text(), HasSubstr("PID 301  carousel 7 is complete\n"));
    EXPECT_THAT(output.text(), testing::ContainsRegex("modules have arrived; a cycle takes [0-9]+\\.[0-9][0-9] s\n"));
    EXPECT_THAT(output.text(), HasSubstr("\n/app/\n/app/events  stream events: start (1), stop (2)\n"));
    EXPECT_THAT(output.text(), HasSubstr("\n/index.html  6 bytes\n"));
}

TEST_F(ACarouselVerb, ReadsOnlyTheOneWithTheTag) {
    tsmake::Carousel second = carouselOf({{{"b", "2"}}});
    second.id = 8;
    second.tag = 33;
    second.pid = kOtherPid;
    service.carousels.push_back(second);
    broadcast(first);
    broadcast(second);
    EXPECT_EQ(run("carousel 28106"), kDone);
    EXPECT_THAT(output.text(), HasSubstr("carousel 7  /index.html  6 bytes\n"));
    EXPECT_THAT(output.text(), HasSubstr("carousel 8  /b  1 bytes\n"));
    const std::size_t before = output.text().size();
    EXPECT_EQ(run("carousel 28106:33"), kDone);
    EXPECT_THAT(output.text().substr(before), HasSubstr("\n/b  1 bytes\n"));
    EXPECT_THAT(output.text().substr(before), Not(HasSubstr("index.html")));
}

TEST_F(ACarouselVerb, WritesTheFiles) {
    broadcast(first);
    EXPECT_EQ(run("carousel 28106 --out " + base + "/files"), kDone);
    EXPECT_EQ(fileText("files/index.html"), "<html>");
    EXPECT_EQ(fileText("files/images/logo.png"), someBytes(1, 3000));
    EXPECT_EQ(fileText("files/" + std::string(200, 'n')), "a long name");
    EXPECT_THAT(output.text(), HasSubstr("3 files in " + base + "/files\n"));
    EXPECT_THAT(output.text(), HasSubstr(": gets the name " + std::string(200, 'n') + "\n"));
    EXPECT_EQ(run("carousel 28106 --out " + base + "/files"), kFailed);
    EXPECT_THAT(output.text(), HasSubstr("cannot write " + base + "/files/"));
}

TEST_F(ACarouselVerb, GetsAFile) {
    broadcast(first);
    EXPECT_EQ(run("carousel get 28106 /images/logo.png --out " + base + "/logo"), kDone);
    EXPECT_EQ(fileText("logo"), someBytes(1, 3000));
    EXPECT_EQ(run("carousel get 28106:32 index.html --out " + base + "/index"), kDone);
    EXPECT_EQ(fileText("index"), "<html>");
    EXPECT_EQ(output.text(), "");
}

TEST_F(ACarouselVerb, ReadsThePresentedServiceWithoutAServiceId) {
    broadcast(first);
    EXPECT_EQ(run("carousel"), kDone);
    EXPECT_THAT(output.text(), HasSubstr("\n/index.html  6 bytes\n"));
    EXPECT_EQ(run("carousel get images/logo.png --out " + base + "/logo"), kDone);
    EXPECT_EQ(fileText("logo"), someBytes(1, 3000));
    EXPECT_THAT(filters.calls, testing::Contains("startPMTRequest " + std::to_string(kPresentedSid)).Times(2));
}

TEST_F(ACarouselVerb, NeedsAServiceIdWhenNothingIsPresented) {
    broadcast(first);
    api.known = false;
    EXPECT_EQ(run("carousel"), kFailed);
    EXPECT_EQ(run("carousel get index.html"), kFailed);
    EXPECT_EQ(run("stream-events"), kFailed);
    EXPECT_EQ(run("carousel get 28106 index.html --out " + base + "/index"), kDone);
    const std::string line = "no channel is presented; name a service\n";
    EXPECT_EQ(output.text(), line + line + line);
}

TEST_F(ACarouselVerb, SaysWhyAFileIsNotThere) {
    broadcast(first);
    EXPECT_EQ(run("carousel get 28106 index.htm"), kFailed);
    EXPECT_EQ(run("carousel get 28106 images"), kFailed);
    filters.broadcast.clear();
    EXPECT_EQ(run("carousel get 28106 index.html --seconds 0"), kFailed);
    EXPECT_EQ(output.text(),
              "index.htm is not in the carousel\nimages is no file, but of kind directory\n"
              "index.html did not come in 0 s\n");
}

TEST_F(ACarouselVerb, ShowsAndWritesWhatHasComeOfAnIncompleteOne) {
    broadcast(first);
    std::vector<std::string>& sections = filters.broadcast[kPid];
    sections.resize(sections.size() / 2);
    sections.pop_back();
    const tsmake::CarouselState state = tsmake::carouselStates(first).at(0);
    for (const tsmake::Section& section : state.control) {
        sections.push_back(asText(section));
    }
    EXPECT_EQ(run("carousel 28106 --seconds 0"), kDone);
    EXPECT_THAT(output.text(), HasSubstr("  has not arrived\n"));
    EXPECT_EQ(run("carousel 28106 --seconds 0 --out " + base + "/files"), kFailed);
    EXPECT_THAT(output.text(), HasSubstr("not all of the carousel has come\n"));
}

TEST_F(ACarouselVerb, ReportsInJsonWhatTheSchemaSays) {
    broadcast(first);
    JsonPrinter jsonPrinter(output.file());
    Session inJson(host, filters, queue, jsonPrinter);
    inJson.atPrompt = true;
    inJson.json = true;
    EXPECT_EQ(runIn(inJson, "carousel 28106"), kDone);
    EXPECT_EQ(runIn(inJson, "carousel get 28106 /index.html"), kDone);
    EXPECT_TRUE(isValidJson(output.text()));
    EXPECT_THAT(output.text(),
                HasSubstr(R"("event":"carousel","pid":301,"carousel_id":7,"module_id":1,"module_version":0,)"));
    EXPECT_THAT(output.text(),
                HasSubstr(R"("object_path":"/index.html","object_kind":"file","object_size":6,"text":)"));
    EXPECT_THAT(output.text(), HasSubstr(R"("data":"3C68746D6C3E")"));
    EXPECT_THAT(output.text(), HasSubstr(R"("cycle":)"));
}

TEST_F(ACarouselVerb, SaysThatTheServiceHasNone) {
    service.carousels.clear();
    EXPECT_EQ(run("carousel 28106"), kFailed);
    EXPECT_EQ(output.text(), "service 28106 has no component that may carry an object carousel\n");
}
