// Section filters and PMT requests on a broadcast, from the browser's library and from the shell.
#include <mutex>
#include <set>

#include "browser_fixture.h"
#include "locks/lock.h"
#include "message_fields.h"
#include "section_filters.h"

namespace {

/// Keeps one copy of each different section.
class CountingSections final : public velmora::dtv::SectionFilterClient {
public:
    void onSectionData(const std::string&, unsigned int, const unsigned char* data, unsigned int length) override {
        const locks::Lock lock(mutex);
        sections.emplace(reinterpret_cast<const char*>(data), length);
    }
    void forget() {
        const locks::Lock lock(mutex);
        sections.clear();
    }
    std::size_t distinct() const { return all().size(); }
    std::set<std::string> all() const {
        const locks::Lock lock(mutex);
        return sections;
    }

private:
    mutable std::mutex mutex;
    std::set<std::string> sections GUARDED_BY(mutex);
};

}  // namespace

TEST_F(ABrowser, ReceivesSectionsOfAFilter) {
    const ServiceProcess service;
    ASSERT_TRUE(connected());
    auto& filters = sectionFilters();
    // The clients outlive the test, because a section may still arrive.
    static auto& everything = *new CountingSections;
    static auto& following = *new CountingSections;
    const std::string first = filters.generateSessionName();
    const std::string second = filters.generateSessionName();
    // EIT of one service, section_number 1: table_id, service_id, then the byte of version and the section's number.
    const unsigned char match[] = {0x4E, 0x6D, 0xCA, 0x00, 0x01};
    const unsigned char bits[] = {0xFF, 0xFF, 0xFF, 0x00, 0xFF};
    ASSERT_TRUE(filters.startSection(&everything, first, 0x12, nullptr, nullptr, 0));
    ASSERT_TRUE(filters.startSection(&following, second, 0x12, match, bits, sizeof match));
    EXPECT_TRUE(eventually([&] { return everything.distinct() == 8 && following.distinct() == 1; }));
    EXPECT_THAT(following.all(), testing::ElementsAre(asText(tsmake::eitSection(kSample, kSample.services[0], true))));
    EXPECT_TRUE(filters.stopSection(&everything, first));
    EXPECT_TRUE(filters.stopSection(&following, second));
    EXPECT_FALSE(filters.stopSection(&following, second));
    EXPECT_FALSE(filters.startSection(&everything, first, 0x2000, nullptr, nullptr, 0)) << "no such PID";
    filters.stopSection(&everything, first);
}

TEST_F(ABrowser, ReceivesThePmtOfAnotherService) {
    const ServiceProcess service;
    ASSERT_TRUE(connected());
    auto& filters = sectionFilters();
    static auto& client = *new CountingSections;
    const std::string session = filters.generateSessionName();
    EXPECT_EQ(filters.startPMTRequest(&client, session, 28108), 0);
    EXPECT_TRUE(eventually([&] { return client.distinct() == 1; }));
    EXPECT_THAT(client.all(), testing::ElementsAre(asText(tsmake::pmtSection(kSample.services[2]))));
    EXPECT_EQ(filters.stopPMTRequest(&client, session), 0);
}

TEST_F(ABrowser, OpensFiltersWithAServiceThatWasStartedAnew) {
    auto service = std::make_unique<ServiceProcess>();
    ASSERT_TRUE(connected());
    auto& filters = sectionFilters();
    static auto& client = *new CountingSections;
    const std::string session = filters.generateSessionName();
    ASSERT_TRUE(filters.startSection(&client, session, 0x00, nullptr, nullptr, 0));
    ASSERT_TRUE(eventually([] { return client.distinct() == 1; }));
    service->end(SIGKILL);
    ASSERT_TRUE(eventually([this] { return api->sendPtsRequest(0) < 0; }));
    service = std::make_unique<ServiceProcess>();
    ASSERT_TRUE(connected());
    EXPECT_FALSE(filters.stopSection(&client, session)) << "the new service does not know it";
    client.forget();
    ASSERT_TRUE(filters.startSection(&client, session, 0x00, nullptr, nullptr, 0)) << "under the same name";
    EXPECT_TRUE(eventually([] { return client.distinct() == 1; }));
    static auto& pmt = *new CountingSections;
    const std::string request = filters.generateSessionName();
    EXPECT_EQ(filters.startPMTRequest(&pmt, request, 28108), 0);
    EXPECT_TRUE(eventually([] { return pmt.distinct() == 1; }));
    EXPECT_TRUE(filters.stopSection(&client, session));
    EXPECT_EQ(filters.stopPMTRequest(&pmt, request), 0);
}

TEST_F(ABrowser, KeepsFiltersUntilTheMultiplexChanges) {
    tsmake::Multiplex other = kSample;
    other.transportStreamId = 1026;
    for (tsmake::Service& service : other.services) {
        service.serviceId = static_cast<std::uint16_t>(service.serviceId + 100);
    }
    const ServiceProcess service(std::vector<std::string>{SAMPLE_FILE, writeBroadcast(other, 4, "other.ts")});
    ASSERT_TRUE(connected());
    ASSERT_TRUE(tunesTo(28106));
    auto& filters = sectionFilters();
    static auto& first = *new CountingSections;
    static auto& second = *new CountingSections;
    const std::string session = filters.generateSessionName();
    const auto closed = [&session] {
        return fileText(kRunDirectory + "/log").find("Filter Closed: " + session) != std::string::npos;
    };
    ASSERT_TRUE(filters.startSection(&first, session, 0x00, nullptr, nullptr, 0));
    ASSERT_TRUE(eventually([] { return first.distinct() == 1; }));
    ASSERT_TRUE(tunesTo(28107));
    first.forget();
    EXPECT_TRUE(eventually([] { return first.distinct() == 1; })) << "it survives within the multiplex";
    EXPECT_FALSE(closed());

    ASSERT_TRUE(tunesTo(28206, 1026));
    EXPECT_TRUE(eventually(closed));
    const std::string next = filters.generateSessionName();
    ASSERT_TRUE(filters.startSection(&second, next, 0x00, nullptr, nullptr, 0));
    EXPECT_TRUE(eventually([] { return second.distinct() == 1; }));
    EXPECT_THAT(second.all(), testing::ElementsAre(asText(tsmake::patSection(other))));
    EXPECT_THAT(first.all(), testing::ElementsAre(asText(tsmake::patSection(kSample))));
    EXPECT_FALSE(filters.stopSection(&first, session)) << "the service knows it no more";
    EXPECT_TRUE(filters.stopSection(&second, next));
    EXPECT_TRUE(tunesTo(28107)) << "and back";
}

TEST(TheShell, DecodesTheSectionsOfAFilter) {
    const ServiceProcess service;
    ChildProcess shell(DVBSHELL, {"sections", "0x11", "--table", "0x42", "--count", "1"}, "shell");
    EXPECT_EQ(shell.wait(), 0) << shell.output();
    EXPECT_THAT(shell.output(), testing::HasSubstr("section  SDT actual  table_id 0x42, transport_stream_id 1025"));
    EXPECT_THAT(shell.output(), testing::HasSubstr("service_provider_name Velmora, service_name Velmora One HD"));
}

TEST(TheShell, GivesSectionsAsTheyAre) {
    const ServiceProcess service;
    const std::string following = asText(tsmake::eitSection(kSample, kSample.services[2], true));
    const std::string path = kRunDirectory + "/sections.bin";
    // EIT of service 28108, section_number 1.
    const std::vector<std::string> filter = {"sections", "18",         "--match", "4e6dcc0001",
                                             "--mask",   "ffffff00ff", "--count", "2"};
    std::vector<std::string> toFile = filter;
    toFile.insert(toFile.end(), {"--out", path});
    ChildProcess writing(DVBSHELL, toFile, "writing");
    EXPECT_EQ(writing.wait(), 0) << writing.output();
    EXPECT_EQ(fileText(path), following + following);
    std::vector<std::string> asHex = filter;
    asHex.emplace_back("--hex");
    ChildProcess showing(DVBSHELL, asHex, "showing");
    EXPECT_EQ(showing.wait(), 0);
    const std::string line = message_fields::hexadecimal(following) + "\n";
    EXPECT_EQ(showing.output(), line + line);
}

TEST(TheShell, ShowsThePmtOfAnyService) {
    const ServiceProcess service;
    ChildProcess shell(DVBSHELL, {"pmt", "28120", "--json"}, "shell");
    EXPECT_EQ(shell.wait(), 0) << shell.output();
    EXPECT_THAT(shell.output(), testing::HasSubstr(R"("name":"PMT","table_id":2,"program_number":28120)"));
    EXPECT_THAT(shell.output(),
                testing::HasSubstr(message_fields::hexadecimal(asText(tsmake::pmtSection(kSample.services[3])))));
}

TEST(TheShell, SaysWhatDidNotCome) {
    const ServiceProcess service;
    ChildProcess none(DVBSHELL, {"sections", "8000", "--seconds", "1"}, "none");
    EXPECT_EQ(none.wait(), 1);
    EXPECT_EQ(none.output(), "dvbshell: sections of PID 8000: 0 of 1 came in 1 s\n");
    ChildProcess pmt(DVBSHELL, {"pmt", "4711", "--seconds", "1"}, "pmt");
    EXPECT_EQ(pmt.wait(), 1);
    EXPECT_EQ(pmt.output(), "dvbshell: the PMT of service 4711: 0 of 1 came in 1 s\n");
    ChildProcess unwritable(DVBSHELL, {"sections", "0", "--out", "/nonexistent/file"}, "unwritable");
    EXPECT_EQ(unwritable.wait(), 1);
    EXPECT_EQ(unwritable.output(), "dvbshell: cannot write /nonexistent/file: No such file or directory\n");
}

TEST(TheShell, RefusesAFilterThatIsNone) {
    const auto complaint = [](std::vector<std::string> arguments) {
        ChildProcess shell(DVBSHELL, std::move(arguments), "shell");
        EXPECT_EQ(shell.wait(), 2);
        return shell.output().substr(0, shell.output().find('\n'));
    };
    EXPECT_EQ(complaint({"sections", "8192"}), "dvbshell: sections: PID: \"8192\" is not a number from 0 to 8191");
    EXPECT_EQ(complaint({"sections"}), "dvbshell: sections: PID is missing");
    EXPECT_EQ(complaint({"sections", "0", "--match", "00"}), "dvbshell: sections: --match has 1 bytes, --mask 0");
    EXPECT_EQ(complaint({"sections", "0", "--match", "0g", "--mask", "00"}),
              "dvbshell: sections: --match: \"0g\" is not bytes in hexadecimal");
    EXPECT_EQ(complaint({"sections", "0", "--table", "256"}),
              "dvbshell: sections: --table: \"256\" is not ID or ID/MASK, each from 0 to 255");
    EXPECT_EQ(complaint({"watch", "--hex"}), "dvbshell: --hex is an option of sections");
    EXPECT_EQ(complaint({"pmt", "65536"}), "dvbshell: pmt: SID: \"65536\" is not a number from 0 to 65535");
}
