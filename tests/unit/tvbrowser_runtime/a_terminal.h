// A terminal for tests: an application manager, and a host that writes down what the manager does.
#pragma once

#include <gmock/gmock.h>

#include <utility>

#include "application_manager.h"

namespace tvbrowser {

/// Each call of the manager as a text, in order: "load 1 http://a.example/a.html", "started", "unload".
class RecordingHost final : public ApplicationHost {
public:
    void load(const RunningApplication& application) override {
        calls.push_back("load " + std::to_string(application.instance) + " " + application.url);
        loaded.push_back(application);
    }
    void unload() override { calls.emplace_back("unload"); }
    void setVisible(bool isVisible) override { calls.emplace_back(isVisible ? "show" : "hide"); }
    void reportStarted(bool hasStarted) override { calls.emplace_back(hasStarted ? "started" : "not started"); }
    void applicationChanged(const RunningApplication& application) override {
        calls.push_back(std::string("changed") + (application.isVisible ? " visible" : " hidden") +
                        (application.isBroadcastRelated ? " related" : " independent"));
    }
    void log(const std::string& line) override { lines.push_back(line); }

    /// The calls since the last question.
    std::vector<std::string> news() { return std::exchange(calls, {}); }

    std::vector<std::string> calls;
    std::vector<RunningApplication> loaded;
    std::vector<std::string> lines;
};

constexpr si::Triplet kOne{1, 1025, 1};
constexpr si::Triplet kTwo{1, 1025, 2};

constexpr ApplicationId kA{0x190, 1};
constexpr ApplicationId kB{0x190, 2};

inline SignalledApplication signalled(const ApplicationId& id, ControlCode control, std::uint8_t priority = 1) {
    SignalledApplication application;
    application.id = id;
    application.control = control;
    application.name = applicationIdText(id);
    application.url = "http://a.example/" + applicationIdText(id) + "/index.html";
    application.priority = priority;
    return application;
}

inline const std::string kUrlA = signalled(kA, ControlCode::present).url;
inline const std::string kUrlB = signalled(kB, ControlCode::present).url;

class ATerminal : public testing::Test {
protected:
    explicit ATerminal(const Terminal& terminal = {}) : manager(host, terminal) {}

    /// Presents the channel, and receives its AIT.
    void present(const si::Triplet& channel, const Applications& applications) {
        manager.channelChanged(true, channel);
        manager.aitReceived(applications);
    }
    /// The number of the running application; 0 if none runs.
    Instance instance() const { return manager.running() == nullptr ? 0 : manager.running()->instance; }
    /// A, an AUTOSTART of channel one, runs, is loaded and visible.
    void runA() {
        present(kOne, {signalled(kA, ControlCode::autostart)});
        manager.pageLoaded(instance());
        manager.show(instance());
        host.calls.clear();
    }
    /// A broadcast-independent application runs, is loaded and visible; no channel is known.
    void runIndependent(const std::string& url = "http://b.example/page.html") {
        manager.startIndependent(url);
        manager.pageLoaded(instance());
        manager.show(instance());
        host.calls.clear();
    }
    KeyAction::Kind press(const std::string& name) { return manager.key(*findKey(name), true).kind; }
    KeyAction::Kind release(const std::string& name) { return manager.key(*findKey(name), false).kind; }

    RecordingHost host;
    ApplicationManager manager;
};

inline auto are() {
    return testing::IsEmpty();
}
template <typename... Calls>
auto are(const Calls&... calls) {
    return testing::ElementsAre(calls...);
}

}  // namespace tvbrowser
