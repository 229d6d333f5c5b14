// The presented service and the channel list by HTTP, from a service in a process of its own.
#include <gmock/gmock.h>

#include <list>
#include <nlohmann/json.hpp>

#include "broadcasts.h"
#include "datagrams.h"
#include "demux.h"
#include "guides.h"
#include "http_client.h"
#include "service_process.h"
#include "si/tables.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

/// dtvserviced with an HTTP server on a port that the system chooses.
class HttpService : public ServiceProcess {
public:
    explicit HttpService(const std::string& file = SAMPLE_FILE, const std::vector<std::string>& options = {})
        : ServiceProcess(with(file, options)) {
        const std::string before = "stream: http://127.0.0.1:";
        const std::string lines = output();
        const std::size_t at = lines.find(before);
        EXPECT_NE(at, std::string::npos) << lines;
        port = static_cast<std::uint16_t>(std::atoi(lines.c_str() + at + before.size()));
    }
    std::uint16_t port = 0;

private:
    static std::vector<std::string> with(const std::string& file, std::vector<std::string> options) {
        options.insert(options.begin(), {file, "--http", "0"});
        return options;
    }
};

/// What dtvctl prints for its arguments.
std::string operate(const std::vector<std::string>& arguments) {
    ChildProcess console(DTVCTL, arguments, "dtvctl");
    console.wait();
    return console.output();
}

bool presents(int sid) {
    return eventually([sid] {
        operate({"tune", "1:1025:" + std::to_string(sid)});
        return operate({"status"}).find("1:1025:" + std::to_string(sid)) != std::string::npos;
    });
}

/// Receives the stream of a client as a set does.
class Receiver {
public:
    explicit Receiver(HttpClient& newClient) : client(newClient) {
        demux.subscribe(0, [this](si::Bytes section) {
            std::string error;
            pat = si::parsePat(section, error).value();
            demux.subscribe(pat.programs.at(0).pmtPid, [this](si::Bytes pmtSection) {
                pmts.emplace(pmtSection.data, pmtSection.data + pmtSection.size);
            });
        });
    }

    /// Reads on until the condition holds. False if the stream ends before.
    template <typename Condition>
    bool readUntil(Condition condition) {
        while (!condition()) {
            if (!client.read()) {
                return false;
            }
            const std::string content = client.content();
            for (; used + kPacketSize <= content.size(); used += kPacketSize) {
                const broadcast::TsPacket packet{reinterpret_cast<const std::uint8_t*>(content.data()) + used};
                EXPECT_EQ(packet.bytes[0], broadcast::kSyncByte);
                demux.feed(packet);
            }
        }
        return true;
    }
    std::uint64_t packets(std::size_t pid) const { return demux.countsOf(static_cast<std::uint16_t>(pid)).packets; }

    broadcast::Demux demux;
    si::Pat pat;
    std::set<std::string> pmts;

private:
    HttpClient& client;
    std::size_t used = 0;
};

constexpr std::size_t kFirstVideo = 257;
constexpr std::size_t kSecondVideo = 513;

}  // namespace

TEST(TheStream, IsThePresentedServiceAlone) {
    const HttpService service;
    ASSERT_TRUE(presents(28106));
    HttpClient client(service.port);
    client.ask("/stream.ts");
    Receiver receiver(client);
    ASSERT_TRUE(receiver.readUntil([&] { return receiver.packets(kFirstVideo) > 100; }));
    EXPECT_EQ(client.status(), 200);
    EXPECT_THAT(client.header(), HasSubstr("Content-Type: video/mp2t\r\n"));
    ASSERT_EQ(receiver.pat.programs.size(), 1U);
    EXPECT_EQ(receiver.pat.programs[0].serviceId, 28106);
    EXPECT_THAT(receiver.pmts, testing::ElementsAre(asText(tsmake::pmtSection(kSample.services[0]))));
    EXPECT_EQ(receiver.packets(kSecondVideo), 0U);
    EXPECT_EQ(receiver.demux.total().crcErrors, 0U);
}

TEST(TheStream, HasNoGaps) {
    const HttpService service(writeBroadcast(kSample, 30, "long.ts"));
    ASSERT_TRUE(presents(28106));
    HttpClient client(service.port);
    client.ask("/stream.ts");
    Receiver receiver(client);
    ASSERT_TRUE(receiver.readUntil([&] { return receiver.packets(kFirstVideo) > 200; }));
    EXPECT_EQ(receiver.demux.total().continuityErrors, 0U);
}

TEST(TheStream, GoesOverToTheServiceThatIsTunedTo) {
    const HttpService service;
    ASSERT_TRUE(presents(28106));
    HttpClient client(service.port);
    client.ask("/stream.ts");
    Receiver receiver(client);
    ASSERT_TRUE(receiver.readUntil([&] { return receiver.packets(kFirstVideo) > 10; }));
    operate({"tune", "1:1025:28107"});
    ASSERT_TRUE(receiver.readUntil([&] { return receiver.packets(kSecondVideo) > 10; }));
    EXPECT_EQ(receiver.pat.programs.at(0).serviceId, 28107);
    const std::uint64_t before = receiver.packets(kFirstVideo);
    ASSERT_TRUE(receiver.readUntil([&] { return receiver.packets(kSecondVideo) > 60; }));
    EXPECT_EQ(receiver.packets(kFirstVideo), before);
}

TEST(TheStream, IsNotHeldUpByAReaderThatDoesNotRead) {
    tsmake::Multiplex fast = kSample;
    fast.bitRate = 40'000'000;
    tsmake::PrivateSections sections;
    sections.pid = 4000;
    sections.perSecond = 1000;
    sections.size = 4096;
    fast.services[0].privateSections.push_back(sections);
    const HttpService service(writeBroadcast(fast, 2, "fast.ts"));
    ASSERT_TRUE(presents(28106));
    constexpr int kSmall = 4096;
    HttpClient stuck(service.port, kSmall);
    stuck.ask("/stream.ts");
    HttpClient client(service.port);
    client.ask("/stream.ts");
    Receiver receiver(client);
    EXPECT_TRUE(receiver.readUntil([&] { return receiver.packets(4000) > 40000; }));
    EXPECT_TRUE(eventually([] {
        return json::parse(operate({"--json", "status"})).at("stream_drops").get<std::uint64_t>() > 0;
    }));
    EXPECT_THAT(service.log(), HasSubstr("a reader of the stream is too slow: "));
}

TEST(TheStream, HasABoundedNumberOfReaders) {
    const HttpService service;
    ASSERT_TRUE(presents(28106));
    std::list<HttpClient> clients;
    for (int count = 0; count < 8; ++count) {
        clients.emplace_back(service.port);
        clients.back().ask("/stream.ts");
        ASSERT_TRUE(eventually([&] { return clients.back().read() && clients.back().status() == 200; }));
    }
    HttpClient late(service.port);
    EXPECT_EQ(late.ask("/stream.ts").readAll().status(), 503);
    EXPECT_THAT(late.content(), HasSubstr("8 readers"));
    clients.pop_front();
    EXPECT_TRUE(eventually([&] {
        HttpClient next(service.port);
        next.ask("/stream.ts").read();
        return next.status() == 200;
    })) << "one has gone";
}

TEST(TheStream, HasNullPacketsInSilence) {
    const HttpService service("udp://127.0.0.1:" + std::to_string(freePort()));
    HttpClient client(service.port);
    client.ask("/stream.ts");
    ASSERT_TRUE(eventually([&] { return client.read() && client.content().size() >= kPacketSize; }));
    const std::string content = client.content();
    EXPECT_EQ(content.substr(0, 4), "\x47\x1F\xFF\x10");
    EXPECT_EQ(content.substr(4, kPacketSize - 4), std::string(kPacketSize - 4, '\xFF'));
}

TEST(TheStream, EndsWithTheService) {
    HttpService service;
    ASSERT_TRUE(presents(28106));
    HttpClient client(service.port);
    ASSERT_TRUE(client.ask("/stream.ts").read());
    EXPECT_EQ(service.end(SIGTERM), 0);
    client.readAll();
    EXPECT_TRUE(client.hasEnded());
}

TEST(TheChannelListByHttp, IsThatOfTheOperatorWithoutTheInputs) {
    const HttpService service;
    ASSERT_TRUE(presents(28106));
    HttpClient client(service.port);
    client.ask("/channels.json").readAll();
    EXPECT_EQ(client.status(), 200);
    EXPECT_THAT(client.header(), HasSubstr("Content-Type: application/json\r\n"));
    const json list = json::parse(client.content());
    EXPECT_EQ(list.size(), 1U);
    EXPECT_EQ(list.at("channels"), json::parse(operate({"--json", "channels"})).at("channels"));
}

TEST(TheProgrammeGuideByHttp, IsThatOfTheBroadcast) {
    const tsmake::Multiplex multiplex = scheduledBroadcast();
    const HttpService service(writeBroadcast(multiplex, 12, "scheduled.ts"));
    const auto guideNow = [&] {
        HttpClient client(service.port);
        return guideOf(json::parse(client.ask("/epg.json").readAll().content()).at("services"));
    };
    EXPECT_TRUE(eventually([&] { return guideNow().size() >= guideOf(multiplex).size(); }));
    EXPECT_EQ(guideNow(), guideOf(multiplex));
    HttpClient client(service.port);
    client.ask("/epg.xml").readAll();
    EXPECT_THAT(client.header(), HasSubstr("Content-Type: application/xml\r\n"));
    EXPECT_EQ(client.content(), operate({"epg", "--xmltv", "--seconds", "0"}));
    EXPECT_THAT(client.content(), HasSubstr("<title lang=\"eng\">Later &lt;28120/30&gt;</title>"));
}

TEST(TheHttpServer, RefusesRequestsThatAreNotForIt) {
    const HttpService service;
    EXPECT_EQ(HttpClient(service.port).ask("/channels.json", "evil.example").readAll().status(), 403);
    EXPECT_EQ(HttpClient(service.port).ask("/stream.ts", "evil.example").readAll().status(), 403);
    EXPECT_EQ(HttpClient(service.port).ask("/channels.json", "").readAll().status(), 403);
    EXPECT_EQ(HttpClient(service.port).ask("/channels.json", "localhost:1").readAll().status(), 200);
    EXPECT_EQ(HttpClient(service.port).ask("/other").readAll().status(), 404);
    EXPECT_EQ(HttpClient(service.port).ask("/channels.json", "localhost", "POST").readAll().status(), 405);
    HttpClient head(service.port);
    EXPECT_EQ(head.ask("/stream.ts", "localhost", "HEAD").readAll().status(), 200);
    EXPECT_EQ(head.content(), "");
}

/// A service in a run directory of its own, so that it runs beside the first.
class OtherService : public ChildProcess {
public:
    explicit OtherService(const std::string& http)
        : ChildProcess(DTVSERVICED, {"--input", SAMPLE_FILE, "--http", http}, "other", Runner::emulator,
                       [] { setenv("DTV_RUN_DIR", (kRunDirectory + "/other").c_str(), 1); }) {}
};

TEST(TheHttpServer, WarnsIfOthersReachIt) {
    const HttpService quiet;
    EXPECT_THAT(quiet.output(), testing::Not(HasSubstr("warning")));
    const OtherService open("0.0.0.0:0");
    EXPECT_TRUE(eventually([&] { return open.output().find("ready") != std::string::npos; }));
    EXPECT_THAT(open.output(), HasSubstr("dtvserviced: warning: everyone who reaches 0.0.0.0:"));
}

TEST(TheHttpServer, EndsTheStartIfItCannotListen) {
    const HttpService first;
    OtherService second("127.0.0.1:" + std::to_string(first.port));
    EXPECT_EQ(second.wait(), 1);
    EXPECT_EQ(second.output(), "dtvserviced: --http: cannot listen at 127.0.0.1:" + std::to_string(first.port) +
                                   ": Address already in use\n");
}

TEST(TheHttpServer, EndsTheStartIfItsAddressIsWrong) {
    ChildProcess wrong(DTVSERVICED, {"--input", SAMPLE_FILE, "--http", "localhost:80"}, "wrong");
    EXPECT_EQ(wrong.wait(), 2);
    EXPECT_THAT(wrong.output(), HasSubstr("dtvserviced: --http: \"localhost\" is not a numeric address"));
}
