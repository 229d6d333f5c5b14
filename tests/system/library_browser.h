// A browser in the test's own process that is made of the library's code, not of its file, so that a test can tell the
// time of the filters' handshake.
#pragma once

#include <future>
#include <list>

#include "browser_dvb_apis.h"
#include "faults.h"
#include "handshake_clock.h"
#include "section_filter_api.h"

namespace faults {

/// The clock of the filters' handshake. It stands still until a test moves it.
class HandshakeTime {
public:
    static void stand() { velmora::dvbservice::handshakeClock = &HandshakeTime::read; }
    static void pass(double seconds) { now() = now() + seconds; }
    /// How often a wait has read the clock: once when it begins, then before each sleep.
    static std::size_t timesRead() { return count(); }

private:
    static double read() {
        ++count();
        return now();
    }
    static std::atomic<double>& now() {
        static std::atomic<double> time{1};
        return time;
    }
    static std::atomic<std::size_t>& count() {
        static std::atomic<std::size_t> times{0};
        return times;
    }
};

/// An object that lives as long as the process, because another thread may use it until then.
template <typename Object, typename... Arguments>
Object& keptForLife(Arguments... arguments) {
    static auto& all = *new std::list<Object>;
    return all.emplace_back(std::move(arguments)...);
}

class CountingFilter final : public velmora::dtv::SectionFilterClient {
public:
    void onSectionData(const std::string&, unsigned int, const unsigned char*, unsigned int) override {
        while (holds) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));  // a client that does not return
        }
        ++received;
    }
    std::atomic<bool> holds{false};
    std::atomic<std::uint64_t> received{0};
};

/// Whether the filter gets a section that comes from now on.
inline bool receives(const CountingFilter& filter) {
    const std::uint64_t before = filter.received;
    return eventually([&] { return filter.received > before; });
}

inline std::string ownLog() {
    return fileText(kRunDirectory + "/log");
}

class ALibraryBrowser : public testing::Test {
protected:
    using Api = velmora::dvbservice::BrowserDvbAPI;
    using Filters = velmora::dvbservice::SectionFilterAPI;

    static bool isConnected() { return Api::getInstance()->sendPtsRequest(0) == 0; }
    static bool connects() { return eventually(&ALibraryBrowser::isConnected); }
    static bool isCutOff() {
        return eventually([] { return !isConnected(); });
    }
    static bool settlesOn(int sid) {
        return eventually(
            [sid] { return Api::getInstance()->getCurrentCCID() == "ccid:1:1025:" + std::to_string(sid); });
    }
    static void tune(int sid) { Api::getInstance()->tuneToService(12, 1, 1025, sid, 0); }
    /// Repeats the tune until the service has read enough of the broadcast.
    static bool tunesTo(int sid) {
        return eventually([sid] {
            tune(sid);
            return Api::getInstance()->getCurrentCCID() == "ccid:1:1025:" + std::to_string(sid);
        });
    }
    /// Opens a filter on the PAT.
    static bool opens(CountingFilter& filter, const std::string& session) {
        return Filters::getInstance()->startSection(&filter, session, 0, nullptr, nullptr, 0);
    }
    static bool closes(CountingFilter& filter, const std::string& session) {
        return Filters::getInstance()->stopSection(&filter, session);
    }
    /// Runs a call on another thread until it sleeps in its wait for a confirmation.
    template <typename Call>
    static std::future<bool> waitsForConfirmation(Call call) {
        const std::size_t before = HandshakeTime::timesRead();
        std::future<bool> result = std::async(std::launch::async, call);
        EXPECT_TRUE(eventually([before] { return HandshakeTime::timesRead() >= before + 2; }));
        return result;
    }

    static CountingFilter& newFilter() { return keptForLife<CountingFilter>(); }
};

}  // namespace faults
