// Live inputs: standard input and datagrams on the loopback.
#include <sys/stat.h>
#include <zlib.h>

#include <nlohmann/json.hpp>
#include <random>

#include "fed_input.h"

namespace {

std::string rtpOf(std::uint16_t sequence, const std::string& payload) {
    std::string header(12, '\0');
    header[0] = '\x80';
    header[1] = 33;
    header[2] = static_cast<char>(sequence >> 8U);
    header[3] = static_cast<char>(sequence & 0xFFU);
    return header + payload;
}

}  // namespace

TEST_F(AnInputThatComesByItself, MayBeDatagrams) {
    const std::uint16_t port = freePort();
    const ServiceProcess process("udp://127.0.0.1:" + std::to_string(port));
    EXPECT_TRUE(arrives(
        [&](const std::string& datagram, std::size_t) { sender.send(datagram, addressOf("127.0.0.1", port)); }));
}

TEST_F(AnInputThatComesByItself, MayBeSentToAGroup) {
    const std::uint16_t port = freePort();
    const ServiceProcess process("udp://@239.255.77.7:" + std::to_string(port) + "?interface=127.0.0.1");
    sender.bindSomewhere();  // datagrams for a group leave by the interface that the sender is bound to
    EXPECT_TRUE(arrives([&](const std::string& datagram, std::size_t) {
        sender.send(datagram, addressOf("239.255.77.7", port));
    })) << process.log();
}

TEST_F(AnInputThatComesByItself, ReordersRtpAndToleratesLosses) {
    const std::uint16_t port = freePort();
    const ServiceProcess process("rtp://127.0.0.1:" + std::to_string(port));
    const sockaddr_in to = addressOf("127.0.0.1", port);
    std::string held;
    EXPECT_TRUE(arrives([&](const std::string& datagram, std::size_t index) {
        const std::string packet = rtpOf(static_cast<std::uint16_t>(index), datagram);
        if (index == 100) {
            return;  // lost
        }
        if (index % 10 == 3) {
            held = packet;  // send the next packet first
            return;
        }
        sender.send(packet, to);
        if (!held.empty()) {
            sender.send(held, to);
            held.clear();
        }
    }));
    std::size_t sent = 0;
    EXPECT_TRUE(eventually([&] {
        const std::size_t index = sent++;
        if (index % 50 != 49) {  // lose every fiftieth packet
            sender.send(rtpOf(static_cast<std::uint16_t>(40000 + index), datagrams[index % datagrams.size()]), to);
        }
        return process.log().find(" RTP packets lost, 0 datagrams that are none, so far") != std::string::npos;
    }));
}

TEST_F(AnInputThatComesByItself, IsPresentedOnceItsNetworkIsKnown) {
    const std::uint16_t port = freePort();
    const ServiceProcess process("udp://127.0.0.1:" + std::to_string(port));
    std::string others = withoutPids(fileText(SAMPLE_FILE), {0x10, 0x11, 0x12});
    constexpr std::size_t kASecond = 1000 * kPacketSize;
    others.resize(kASecond);
    for (const std::string& datagram : datagramsOf(others)) {
        sender.send(datagram, addressOf("127.0.0.1", port));
    }
    ASSERT_TRUE(eventually([] { return operate({"channels"}).find(":1025:28106") != std::string::npos; }));
    ASSERT_TRUE(answersWhatWasAsked()) << "the service knows the browser";
    const std::string ait =
        "onAitSectionAvailable(" + shownValue(asText(tsmake::aitSection(kSample.services[0]))) + ")";
    EXPECT_TRUE(playsUntil(port, datagrams, [&] { return heard(ait); }));
    EXPECT_TRUE(heard("onAitChannelInfoUpdated(0, 1, 1025, 28106)"));
    EXPECT_FALSE(heard("onAitChannelInfoUpdated(0, 65535, 1025, 28106)"));
    EXPECT_EQ(timesHeard(ait), 1);
}

TEST_F(AnInputThatComesByItself, IsPresentedAgainWhenItsNetworkBecomesKnown) {
    const std::uint16_t port = freePort();
    const ServiceProcess process("udp://127.0.0.1:" + std::to_string(port));
    const std::string ait =
        "onAitSectionAvailable(" + shownValue(asText(tsmake::aitSection(kSample.services[0]))) + ")";
    // Without NIT, SDT and EIT the network stays unknown.
    ASSERT_TRUE(playsUntil(port, datagramsOf(withoutPids(fileText(SAMPLE_FILE), {0x10, 0x11, 0x12})), [&] {
        sends(&Commands::cmdTriggerAitReparse);
        return heard(ait);
    }));
    EXPECT_TRUE(heard("onAitChannelInfoUpdated(0, 65535, 1025, 28106)"));
    const std::string channel = "onAitChannelInfoUpdated(0, 1, 1025, 28106)";
    EXPECT_TRUE(playsUntil(port, datagrams, [&] { return heard(channel); }));
    EXPECT_TRUE(eventually([&] {
        const std::vector<std::string> texts = client->texts();
        const auto told = std::find(texts.begin(), texts.end(), channel);
        return std::find(told, texts.end(), ait) != texts.end();
    })) << "the AIT again, for the channel by its whole name";
    EXPECT_EQ(timesHeard("onServiceChanged(" + shownValue(std::string("service_started")) + ", " +
                         shownValue(std::string("1:1025:28106")) + ")"),
              1);
    EXPECT_EQ(timesHeard("onPmtDataChange(1, 1025, 28106, 0, " +
                         shownValue(asText(tsmake::pmtSection(kSample.services[0]))) + ")"),
              1);
}

TEST_F(AnInputThatComesByItself, IsToldOfEachChangeOnce) {
    tsmake::Multiplex multiplex = kSample;
    tsmake::Service& changing = multiplex.services[0];
    changing.events = {{1, "First", "", 2}, {2, "Second", "", 3600}};
    tsmake::Application bounded = {0x190, 7, 2, "Shop", "https://shop.example/", "start.html"};
    bounded.boundaries = {"https://pay.example", "https://help.example/tv"};
    changing.ait.versions.push_back({2, 2, {bounded}});
    changing.ait.end = 4;
    const std::string broadcast = fileText(writeBroadcast(multiplex, 6, "changes.ts"));
    const std::uint16_t port = freePort();
    const ServiceProcess process("udp://127.0.0.1:" + std::to_string(port));
    const auto eit = [&](int update, bool following, std::size_t present) {
        return "onEitDataChange(" + std::to_string(update) + ", " +
               shownValue(asText(tsmake::eitSection(multiplex, changing, following, present))) + ")";
    };
    const auto ait = [&](std::size_t state) {
        return "onAitSectionAvailable(" + shownValue(asText(tsmake::aitSection(changing, 0, state))) + ")";
    };
    // The values of the AIT's application, with profile version 1.2.1 and priority 1.
    const std::string offered = "onAitInfoAvailable(400, 7, 2, 1, 2, 1, " + shownValue(bounded.urlBase) + ", " +
                                shownValue(bounded.initialPath) + ", 1)";
    const auto boundary = [&](std::size_t number) {
        return "onAitBoundaryExtensionAvailable(400, 7, " + shownValue(bounded.boundaries[number]) + ")";
    };
    const auto pmt = [&](int update) {
        return "onPmtDataChange(1, 1025, 28106, " + std::to_string(update) + ", " +
               shownValue(asText(tsmake::pmtSection(changing, update != 0))) + ")";
    };
    const lo::browserdvbservice::TuneInfoChannel channel = channelOf(changing);
    ASSERT_TRUE(playsUntil(port, partOf(broadcast, 0, 2), [&] {
        sends(&Commands::cmdTuneToService, channel);
        return heard(pmt(0)) && heard(eit(0, false, 0)) && heard(eit(0, true, 0)) && heard(ait(0));
    }));
    ASSERT_TRUE(answersWhatWasAsked()) << "a tune that is still to come would tell everything again";
    EXPECT_TRUE(playsUntil(port, partOf(broadcast, 2, 2), [&] {
        return heard(eit(1, false, 1)) && heard(eit(1, true, 1)) && heard(ait(1)) && heard(boundary(1));
    })) << testing::PrintToString(client->texts());
    EXPECT_TRUE(playsUntil(port, partOf(broadcast, 4, 2),
                           [&] { return heard("onAitParsingStateChanged(0)") && heard(pmt(1)); }));
    // The answer to a later command shows that no other event was sent.
    ASSERT_TRUE(answersWhatWasAsked());
    for (const std::string& once :
         {eit(1, false, 1), eit(1, true, 1), ait(1), pmt(1), offered, boundary(0), boundary(1)}) {
        EXPECT_EQ(timesHeard(once), 1) << once;
    }
    EXPECT_EQ(timesHeard("onAitParsingStateChanged(0)"), 1);
}

TEST_F(AnInputThatComesByItself, MayBeStandardInput) {
    const std::string script = std::string("exec $DTV_EMULATOR ") + DTVSERVICED + " --input - < " + SAMPLE_FILE;
    const ChildProcess process("/bin/sh", {"-c", script}, "service", Runner::machine);
    EXPECT_TRUE(presents(kSample.services[0])) << process.output() << process.log();
    EXPECT_TRUE(eventually([&] { return process.log().find("standard input has ended") != std::string::npos; }));
    EXPECT_THAT(operate({"status"}), testing::HasSubstr("presented    1:1025:28106")) << "the service goes on";
}

TEST_F(AnInputThatComesByItself, IsReopenedAfterAFailureWhileOthersContinue) {
    auto occupied = std::make_unique<Socket>();
    const std::uint16_t port = occupied->bindSomewhere();
    const std::string input = "udp://127.0.0.1:" + std::to_string(port);
    tsmake::Multiplex other = kSample;
    other.transportStreamId = 2000;
    const ServiceProcess process({writeBroadcast(other, 3, "other.ts"), input});
    EXPECT_TRUE(eventually([&] {
        return process.log().find("cannot listen at " + input +
                                  ": Address already in use; trying again every second") != std::string::npos;
    }));
    EXPECT_TRUE(eventually([&] { return operate({"channels"}).find("1:2000:28106") != std::string::npos; }));
    occupied.reset();
    EXPECT_TRUE(arrives(
        [&](const std::string& datagram, std::size_t) { sender.send(datagram, addressOf("127.0.0.1", port)); }));
}

using AFileAsInput = ARawBrowser;

TEST_F(AFileAsInput, MayComeLater) {
    tsmake::Multiplex other = kSample;
    other.transportStreamId = 2000;
    const std::string later = kRunDirectory + "/later.ts";
    const ServiceProcess process({SAMPLE_FILE, later});
    EXPECT_THAT(process.output(), testing::HasSubstr("dtvserviced: cannot open " + later +
                                                     ": No such file or directory; trying again every second\n"));
    EXPECT_TRUE(presents(kSample.services[0])) << "the other input is played";
    const std::string made = writeBroadcast(other, 3, "made.ts");
    ASSERT_EQ(std::rename(made.c_str(), later.c_str()), 0);
    EXPECT_TRUE(eventually([&] { return operate({"channels"}).find("1:2000:28106") != std::string::npos; }));
    EXPECT_THAT(process.log(), testing::HasSubstr(later + " has been opened"));
}

TEST_F(AFileAsInput, IsRefusedIfItIsAPipeWhileOthersPlay) {
    const std::string pipe = kRunDirectory + "/pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const ServiceProcess process({SAMPLE_FILE, pipe});
    EXPECT_THAT(process.output(), testing::HasSubstr("dtvserviced: " + pipe +
                                                     " is no regular file; what comes by a pipe is played from "
                                                     "standard input, \"-\"; trying again every second\n"));
    EXPECT_TRUE(presents(kSample.services[0])) << "the other input is played";
}

TEST_F(AFileAsInput, MayBeDamaged) {
    std::string bytes = fileText(SAMPLE_FILE);
    std::mt19937 random(7);  // the same damage in every run
    for (std::size_t packet = 0; packet < bytes.size() / kPacketSize; packet += 1 + random() % 16) {
        for (int change = 0; change < 4; ++change) {
            bytes[packet * kPacketSize + 1 + random() % (kPacketSize - 1)] = static_cast<char>(random());
        }
    }
    const std::string file = kRunDirectory + "/damaged.ts";
    std::ofstream(file, std::ios::binary) << bytes << std::string(100, 'x');
    ServiceProcess process(file);
    EXPECT_TRUE(presents(kSample.services[1])) << "tables repeat";
    EXPECT_TRUE(eventually([] {
        const auto answer = nlohmann::json::parse(operate({"--json", "statistics"}), nullptr, false);
        const auto& input = answer["inputs"][0];
        return input["crc_errors"] > 0 && input["continuity_errors"] > 0 && input["incomplete_sections"] > 0;
    })) << operate({"--json", "statistics"});
    EXPECT_EQ(process.end(SIGTERM), 0) << "it has lived to the end";
}

TEST_F(AFileAsInput, IsToldOfWhereItIsCut) {
    const std::string whole = fileText(SAMPLE_FILE);
    const std::string packed = kRunDirectory + "/cut.ts.gz";
    gzFile const file = gzopen(packed.c_str(), "wb");
    ASSERT_EQ(gzwrite(file, whole.data(), static_cast<unsigned int>(whole.size())), static_cast<int>(whole.size()));
    ASSERT_EQ(gzclose(file), Z_OK);
    const std::string compressed = fileText(packed);
    std::ofstream(packed, std::ios::binary) << compressed.substr(0, compressed.size() / 2);
    const ServiceProcess process(packed);
    EXPECT_TRUE(presents(kSample.services[0])) << "what stands before the cut is played";
    EXPECT_TRUE(eventually([&] { return process.log().find("cannot read " + packed + ": ") != std::string::npos; }));
}
