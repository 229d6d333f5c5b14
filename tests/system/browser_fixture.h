// A browser in the test's own process: it loads the library as a browser does, and records the events of a listener.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "broadcasts.h"
#include "events.h"
#include "for_life.h"
#include "library.h"
#include "service_process.h"

using dvbshell::Event;
using dvbshell::EventKind;

class ABrowser : public testing::Test {
protected:
    ABrowser() {
        std::string error;
        api = dvbshell::loadDvbApi(LIBRARY_FILE, error);
        EXPECT_NE(api, nullptr) << error;
        api->addListener(listener);
    }
    ~ABrowser() override { api->removeListener(listener); }

    void tune(int sid) { api->tuneToService(12, 1, 1025, sid, 0); }

    /// Waits for an event of this kind that meets the condition, and ignores others.
    template <typename Condition>
    testing::AssertionResult arrives(EventKind kind, Condition condition) {
        const auto end = dvbshell::Clock::now() + std::chrono::seconds(20);
        while (const std::optional<Event> event = queue.take(end)) {
            if (event->kind == kind && condition(*event)) {
                return testing::AssertionSuccess();
            }
        }
        return testing::AssertionFailure() << "did not arrive";
    }
    testing::AssertionResult sectionArrives(EventKind kind, const tsmake::Section& section) {
        return arrives(kind, [&](const Event& event) { return event.section == asText(section); });
    }
    testing::AssertionResult channelArrives(int sid) {
        return arrives(EventKind::channel, [sid](const Event& event) {
            return event.started && event.onid == 1 && event.tsid == 1025 && event.sid == sid;
        });
    }
    /// Waits until commands reach a service and a channel is known.
    bool connected() {
        return eventually([this] {
            int onid = 0;
            int tsid = 0;
            int sid = 0;
            return api->sendPtsRequest(0) == 0 && api->getCurrentChannelInfo(onid, tsid, sid) == 0;
        });
    }
    /// The library updates the channel's values one by one, so read them until they form the expected channel.
    bool settlesOn(const std::string& ccid) {
        return eventually([&] { return api->getCurrentCCID() == ccid; });
    }
    /// Repeats the tune until the service has read enough of the broadcast.
    bool tunesTo(int sid, int tsid = 1025) {
        return eventually([this, sid, tsid] {
            api->tuneToService(12, 1, tsid, sid, 0);
            return api->getCurrentCCID() == "ccid:1:" + std::to_string(tsid) + ":" + std::to_string(sid);
        });
    }

    /// An event may still reach the listener after the test, so the queue lives as long as the process.
    dvbshell::EventQueue& queue = dvbshell::forLife(new dvbshell::EventQueue);
    std::shared_ptr<velmora::dtv::DVBServiceListener> listener = dvbshell::makeListener(queue);
    velmora::dtv::DvbAPIInterface* api = nullptr;
};
