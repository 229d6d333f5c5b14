// Television: the set around the browser. It connects the broadcast, the application manager, the page and the remote
// control.
// Threads: the main one.
// Blocks:  never, but for the construction, which loads the library.
// Fails:   the constructor throws std::runtime_error when the library or the engine cannot be used.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "application_manager.h"
#include "broadcast.h"
#include "dvb_scheme.h"
#include "first_script.h"
#include "page_view.h"
#include "screen.h"

namespace tvbrowser {

class Television final : private ApplicationHost {
public:
    /// Takes lines about the life of applications and from their pages.
    using Say = std::function<void(const std::string& line)>;

    Television(const SetDescription& newSet, const PageSettings& settings, Say newSay);
    ~Television() override;

    /// A key is pressed: it goes down and up. False if the remote control has no such key.
    bool press(const std::string& name);
    /// Starts a signalled application. False if none with this id may be started.
    bool start(const ApplicationId& id) { return manager.start(id); }
    /// Starts an application from outside of the broadcast.
    bool open(const std::string& url, const std::optional<ApplicationId>& id) {
        return manager.startIndependent(url, id);
    }
    /// Pages show this stream as the broadcast's picture; an empty URL: none.
    void setPicture(const std::string& url);
    /// The presented service's applications, and which one runs: a line each.
    std::vector<std::string> applications() const;
    /// For the page for people: the presented channel, the channel list, the applications and the one that runs.
    nlohmann::json state() const;
    const Screen& screen() const { return shown; }

private:
    void load(const RunningApplication& application) override;
    void unload() override;
    void setVisible(bool isVisible) override;
    void reportStarted(bool hasStarted) override;
    void applicationChanged(const RunningApplication& application) override;
    void log(const std::string& line) override { say(line); }

    DvbScheme::Carousels carousels();
    PageViewEvents eventsOf(Instance instance);
    /// A new page in place of the present one.
    void replacePage(Instance instance);
    void showNothing();
    void forgetLeaving();
    void onXmlAit(Instance instance, const std::string& document);
    void onProcessDied(Instance instance);
    void onBroadcast(const std::string& name, const nlohmann::json& value);
    void onCall(const std::string& name, const nlohmann::json& call);
    void takeApplications();
    void readAhead(const Applications& applications);
    void key(const RemoteKey& key, bool isDown);
    void zap(bool forward);

    SetDescription set;
    const Say say;
    ApplicationManager manager;
    const PageContext context;
    Screen shown;
    std::unique_ptr<PageView> page;
    std::unique_ptr<PageView> leaving;  ///< the page of before, until this one is there
    std::unique_ptr<Broadcast> broadcast;
    DvbScheme scheme;
};

}  // namespace tvbrowser
