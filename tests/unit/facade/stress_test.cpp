// Browser threads, events and listeners that are added and removed, all at once: there is no deadlock, and a listener
// that stays registered receives every event exactly once. The thread sanitizer checks the accesses.
#include <atomic>
#include <thread>

#include "facade_fixture.h"

namespace {

constexpr int kRounds = 300;
constexpr int kBrowserThreads = 4;

/// Counts events instead of recording them.
class CountingListener : public RecordingListener {
public:
    std::atomic<int> pts{0};
    void onPtsNotify(std::uint64_t, std::uint64_t) override { ++pts; }
};

void oneEventOfEachKind(int round) {
    const auto u16 = [](int value) { return static_cast<unsigned short>(value); };
    const auto u8 = [](int value) { return static_cast<unsigned char>(value); };
    injectEvent<messages::OnServiceChanged>("service_started", "1:2:" + std::to_string(round));
    injectEvent<messages::OnAcquireDtvServiceInfo>("1:2:" + std::to_string(round));
    injectEvent<messages::OnAitChannelInfoUpdated>(static_cast<short>(0), u16(1), u16(2), u16(round));
    injectEvent<messages::OnAitSectionAvailable>("ait");
    injectEvent<messages::OnAitParsingStateChanged>(u16(1));
    injectEvent<messages::OnPmtDataChange>(u16(1), u16(2), u16(round), 0, "pmt");
    injectEvent<messages::OnDATagsServicePmtDataChange>(u16(1), u16(2), u16(round), 0, "pmt");
    injectEvent<messages::OnEitDataChange>(0, "eit");
    injectEvent<messages::OnTimelineInfoChange>(u8(1), u8(2), u8(3), 4U, 5ULL, 6ULL);
    injectEvent<messages::OnSelectedComponentChange>(1U, 2U, u16(3), u16(4), u16(5), u16(6));
    injectEvent<messages::OnComponentInfoChange>(u16(1), 2U, 3U, u16(4), u16(5), u16(6), u16(7), u16(8), 9U, u16(10));
    injectEvent<messages::OnHbbtvEngineStatusChanged>(1);
    injectEvent<messages::OnAllTerminalStoped>();
    injectEvent<messages::OnSetAudioSourceFinished>(1U, 0);
    injectEvent<messages::OnOSDStateChanged>(1U, 2U);
    injectEvent<messages::OnDrmResultReply>(1ULL, u8(2), "m", u16(3));
    injectEvent<messages::OnCaDrmConnected>(1ULL, u16(2), u16(3));
    injectEvent<messages::OnCaDrmDisonnected>(u16(1), u16(2));
    injectEvent<messages::OnCaDrmSystemStatusChanged>(u16(1), u16(2));
    injectEvent<messages::OnFilterClosed>("unknown");
    injectEvent<messages::OnPtsNotify>(1ULL, 2ULL);
}

void everyOperation(velmora::dtv::DvbAPIInterface& api, int round) {
    int onid = 0;
    int tsid = 0;
    int sid = 0;
    api.getCurrentChannelInfo(onid, tsid, sid);
    api.getCurrentCCID();
    api.getCurrentDsd();
    api.sendApplicationStartedFailed();
    api.sendApplicationStartedSucceeded();
    api.triggerAitRestart();
    api.tuneToService(12, 1, 2, round, 0);
    api.tuneToService("dsd", round, 0);
    api.tuneToComponent(1, 2, 3);
    api.selectComponent(1);
    api.unselectComponent(1);
    api.notifyMwhbStart();
    api.sendPtsRequest(1);
    api.startTemiTimelineRequest(1, 2, 3);
    api.stopTemiTimelineRequest();
    api.startOSDDetection(1);
    api.stopOSDDetection(1);
    api.sendDrmMessage(1, 2, 3, "a", "b");
    api.connectCa(1);
    api.disconnectCa(1);
    api.sendOpAppInstallStatus(0, 1);
    api.vbStartDtvInfoRequest();
    const auto passing = std::make_shared<CountingListener>();
    api.addListener(passing);
    api.removeListener(passing);
}

}  // namespace

TEST_F(TheDvbApi, DeliversEachEventOnceUnderLoad) {
    recording::setLogThreshold(0);
    const auto throughout = std::make_shared<CountingListener>();
    api->addListener(throughout);
    std::atomic<bool> done{false};
    std::vector<std::thread> browsers;
    for (int count = 0; count < kBrowserThreads; ++count) {
        browsers.emplace_back([this, &done] {
            for (int round = 0; !done; ++round) {
                everyOperation(*api, round);
            }
        });
    }
    for (int round = 0; round < kRounds; ++round) {
        oneEventOfEachKind(round);
    }
    done = true;
    for (std::thread& browser : browsers) {
        browser.join();
    }
    api->removeListener(throughout);
    EXPECT_EQ(throughout->pts, kRounds);
    EXPECT_EQ(throughout->calls().size(), std::size_t{16} * kRounds);
}
