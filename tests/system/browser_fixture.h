// A browser in the test's own process: it loads the library as a browser does, and hears what a listener hears.
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

    /// The next event of a kind that a condition holds for; others are passed over.
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
    /// Commands reach a service and a channel is known.
    bool connected() {
        return eventually([this] {
            int onid = 0;
            int tsid = 0;
            int sid = 0;
            return api->sendPtsRequest(0) == 0 && api->getCurrentChannelInfo(onid, tsid, sid) == 0;
        });
    }
    /// A reading in the middle of a report may show parts of it, so the channel is looked at until it is whole.
    bool settlesOn(const std::string& ccid) {
        return eventually([&] { return api->getCurrentCCID() == ccid; });
    }
    /// Tunes until the service knows the broadcast so far.
    bool tunesTo(int sid, int tsid = 1025) {
        return eventually([this, sid, tsid] {
            api->tuneToService(12, 1, tsid, sid, 0);
            return api->getCurrentCCID() == "ccid:1:" + std::to_string(tsid) + ":" + std::to_string(sid);
        });
    }

    /// An event may still be on its way to the listener when a test ends.
    dvbshell::EventQueue& queue = dvbshell::forLife(new dvbshell::EventQueue);
    std::shared_ptr<velmora::dtv::DVBServiceListener> listener = dvbshell::makeListener(queue);
    velmora::dtv::DvbAPIInterface* api = nullptr;
};
