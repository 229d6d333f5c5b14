// A broadcast without the tables that carry original_network_id. The service uses one value for it everywhere.
#include "raw_browser.h"
#include "si/tables.h"

namespace {

const std::string kUnknown = std::to_string(si::kUnknownNetworkId);

class AnUnknownNetwork : public ARawBrowser {
protected:
    AnUnknownNetwork() {
        constexpr unsigned int kNitPid = 0x10;
        constexpr unsigned int kSdtPid = 0x11;
        constexpr unsigned int kEitPid = 0x12;
        std::ofstream(path, std::ios::binary) << withoutPids(fileText(SAMPLE_FILE), {kNitPid, kSdtPid, kEitPid});
    }

    /// Without a network, the first service is presented after the PAT has arrived often enough.
    bool presentsTheFirst() {
        return eventually([this] {
            sends(&Commands::cmdTriggerServiceInfoAcquire);
            return heard("onAcquireDtvServiceInfo(" + shownValue(triplet) + ")");
        });
    }

    const std::string path = kRunDirectory + "/without-network.ts";
    const std::string triplet = kUnknown + ":1025:28106";
};

}  // namespace

TEST_F(AnUnknownNetwork, IsTheSameInEventsAndTheirTexts) {
    const ServiceProcess process(path);
    ASSERT_TRUE(presentsTheFirst()) << testing::PrintToString(client->texts());
    ASSERT_TRUE(sends(&Commands::cmdTriggerAitReparse));
    EXPECT_TRUE(hears("onAitChannelInfoUpdated(0, " + kUnknown + ", 1025, 28106)"));
    ASSERT_TRUE(sends(&Commands::cmdSendPMTCache));
    EXPECT_TRUE(hears("onPmtDataChange(" + kUnknown + ", 1025, 28106, 0, " +
                      shownValue(asText(tsmake::pmtSection(kSample.services[0]))) + ")"));
}

TEST_F(AnUnknownNetwork, IsTheSameForTheOperator) {
    const ServiceProcess process(path);
    ASSERT_TRUE(presentsTheFirst()) << testing::PrintToString(client->texts());
    EXPECT_THAT(operate({"channels"}), testing::HasSubstr("* " + triplet + " "));
    EXPECT_THAT(operate({"status"}), testing::HasSubstr("presented    " + triplet + "\n"));
    EXPECT_EQ(operate({"tune", kUnknown + ":1025:28107"}), "");
    EXPECT_TRUE(hears("onServiceChanged(" + shownValue(std::string("service_started")) + ", " +
                      shownValue(kUnknown + ":1025:28107") + ")"));
}

TEST_F(AnUnknownNetwork, HasTheSameValueInAFileList) {
    ChildProcess list(DTVSERVICED, {"--list", path}, "list");
    EXPECT_EQ(list.wait(), 0);
    EXPECT_THAT(list.output(), testing::StartsWith(triplet + "\tpmt\thbbtv\t"));
}

TEST_F(AnUnknownNetwork, MayBeTunedTo) {
    const ServiceProcess process(path);
    lo::browserdvbservice::TuneInfoChannel channel = channelOf(kSample.services[1]);
    channel.onid = si::kUnknownNetworkId;
    EXPECT_TRUE(eventually([&] {
        sends(&Commands::cmdTuneToService, channel);
        return heard("onServiceChanged(" + shownValue(std::string("service_started")) + ", " +
                     shownValue(kUnknown + ":1025:28107") + ")");
    }));
}
