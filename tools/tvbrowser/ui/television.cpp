// The set.
#include "television.h"

#include <algorithm>
#include <map>
#include <stdexcept>
#include <utility>

#include "application_url.h"
#include "engine_keys.h"
#include "main_loop.h"
#include "signalled_applications.h"
#include "xml_ait.h"

namespace tvbrowser {

namespace {

Library libraryOrThrow(const std::string& path) {
    std::string error;
    const std::optional<Library> library = loadLibrary(path, error);
    if (!library) {
        throw std::runtime_error(error);
    }
    return *library;
}

std::optional<si::Triplet> tripletOf(const nlohmann::json& channel) {
    if (!channel.is_object()) {
        return std::nullopt;
    }
    si::Triplet triplet;
    triplet.onid = channel.value("onid", si::Triplet{}.onid);
    triplet.tsid = channel.value("tsid", si::Triplet{}.tsid);
    triplet.sid = channel.value("sid", si::Triplet{}.sid);
    return triplet;
}

std::string described(const RunningApplication& application) {
    return (application.id ? applicationIdText(*application.id) + " " : "") + application.url;
}

}  // namespace

Television::Television(const SetDescription& newSet, const PageSettings& settings, Say newSay)
    : set(newSet),
      say(std::move(newSay)),
      manager(*this),
      context(settings),
      shown(newSet.width, newSet.height),
      scheme(context.web(), carousels(), say) {
    const Library library = libraryOrThrow(settings.libraryPath);
    showNothing();
    broadcast = std::make_unique<Broadcast>(
        library, postToMainLoop,
        [this](const std::string& name, const nlohmann::json& value) { onBroadcast(name, value); });
}

Television::~Television() = default;

/// The engine asks from its main loop, so the broadcast is there.
DvbScheme::Carousels Television::carousels() {
    return {
        [this](WebKitWebView* view) { return page && page->engineView() == view; },
        [this](const CarouselPlace& place, TakeAnswer take) { return broadcast->askForFile(place, std::move(take)); },
        [this](QuestionNumber number) { broadcast->cancelFile(number); }};
}

PageViewEvents Television::eventsOf(Instance instance) {
    PageViewEvents events;
    events.onLoaded = [this, instance] {
        forgetLeaving();
        manager.pageLoaded(instance);
    };
    events.onFailed = [this, instance](const std::string& reason) { manager.loadFailed(instance, reason); };
    events.onXmlAit = [this, instance](const std::string& document) { onXmlAit(instance, document); };
    events.onProcessDied = [this, instance] { onProcessDied(instance); };
    events.mayGoOnTo = [this, instance](const std::string& url) { return manager.mayGoOnTo(instance, url); };
    events.onLeft = [this, instance](const std::string& url) { manager.leftBoundary(instance, url); };
    events.onCall = [this](const std::string& name, const nlohmann::json& call) { onCall(name, call); };
    events.onLog = [this](const std::string& subject, const std::string& text) { say(subject + ": " + text); };
    return events;
}

void Television::replacePage(Instance instance) {
    auto next = std::make_unique<PageView>(context, shown, page.get(), eventsOf(instance));
    if (page) {
        page->leave();
        scheme.leave(page->engineView());
    }
    forgetLeaving();
    leaving = std::exchange(page, std::move(next));
    shown.clear();
}

/// Later, because a page may be in the middle of telling what leads here.
void Television::forgetLeaving() {
    if (leaving) {
        postToMainLoop([last = std::shared_ptr<PageView>(std::move(leaving))] {});
    }
}

void Television::showNothing() {
    replacePage(0);
    shown.show(false);
    page->loadNothing();
}

void Television::load(const RunningApplication& application) {
    say("application: load " + described(application));
    replacePage(application.instance);
    shown.show(application.isVisible);
    page->load(application.url, firstScript(application, set, context.key()));
}

void Television::unload() {
    say("application: none");
    showNothing();
}

void Television::onXmlAit(Instance instance, const std::string& document) {
    std::string error;
    if (const std::optional<Applications> applications = parseXmlAit(document, error)) {
        manager.xmlAitReceived(instance, *applications);
    } else {
        manager.loadFailed(instance, "its XML AIT is wrong: " + error);
    }
}

void Television::onProcessDied(Instance instance) {
    say("the web process has ended");
    if (instance == 0 && manager.running() == nullptr) {
        showNothing();
    } else {
        manager.webProcessDied(instance);
    }
}

void Television::setVisible(bool isVisible) {
    shown.show(isVisible);
    say(isVisible ? "application: shown" : "application: hidden");
}

void Television::reportStarted(bool hasStarted) {
    say(hasStarted ? "application: started" : "application: not started");
    broadcast->call("applicationStarted", {{"ok", hasStarted}});
}

void Television::applicationChanged(const RunningApplication& application) {
    page->setFirstScript(firstScript(application, set, context.key()));
    page->tell("application", stateOf(application));
}

void Television::setPicture(const std::string& url) {
    set.picture = url;
    if (const RunningApplication* const running = manager.running()) {
        page->setFirstScript(firstScript(*running, set, context.key()));
        page->tell("picture", {{"url", url}});
    }
}

void Television::onBroadcast(const std::string& name, const nlohmann::json& value) {
    if (name == "channelChanged") {
        const std::optional<si::Triplet> channel = tripletOf(value["channel"]);
        say(std::string(value.value("started", false) ? "channel: " : "channel: no change, ") +
            (channel ? tripletText(*channel) : "unknown"));
        manager.channelChanged(value.value("started", false), channel);
        takeApplications();
    } else if (name == "applicationsChanged") {
        takeApplications();
    } else if (name == "service") {
        say(value.value("connected", false) ? "service: connected" : "service: gone");
    } else if (name == "warning") {
        say("broadcast: " + value.value("text", ""));
    }
}

void Television::takeApplications() {
    const nlohmann::json known = broadcast->call("applications", nullptr);
    if (known.value("signalled", false)) {
        if (known.value("complete", false)) {
            const Applications applications = signalledApplications(known["list"]);
            readAhead(applications);
            manager.aitReceived(applications);
        }
    } else if (known.value("known", false)) {
        manager.aitAbsent();
    }
}

/// So that one that the user starts later is there at once.
void Television::readAhead(const Applications& applications) {
    const auto hasCarousel = [](const SignalledApplication& one) {
        return isDvbUrl(one.url) || std::any_of(one.otherUrls.begin(), one.otherUrls.end(), isDvbUrl);
    };
    if (std::any_of(applications.begin(), applications.end(), hasCarousel)) {
        broadcast->readCarousels();
    }
}

void Television::onCall(const std::string& name, const nlohmann::json& call) {
    using Request = std::function<void(Television&, Instance, const nlohmann::json&)>;
    static const std::map<std::string, Request> kRequests{
        {"createApplication",
         [](Television& self, Instance caller, const nlohmann::json& argument) {
             self.manager.createApplication(caller, argument.value("url", ""));
         }},
        {"destroyApplication",
         [](Television& self, Instance caller, auto&) { self.manager.destroyApplication(caller); }},
        {"showApplication", [](Television& self, Instance caller, auto&) { self.manager.show(caller); }},
        {"hideApplication", [](Television& self, Instance caller, auto&) { self.manager.hide(caller); }},
        {"setKeyset",
         [](Television& self, Instance caller, const nlohmann::json& argument) {
             self.manager.setKeyset(caller, argument.value("mask", KeyMask{0}),
                                    argument.value("otherKeys", std::vector<unsigned int>()));
         }},
        {"tune",
         [](Television& self, Instance caller, const nlohmann::json& argument) {
             const bool hasTriplet = argument.is_object() && argument.contains("tsid");
             self.manager.tuneRequested(caller, hasTriplet ? tripletOf(argument) : std::nullopt);
         }},
        {"leaveBroadcast", [](Television& self, Instance caller, auto&) { self.manager.becomeIndependent(caller); }}};
    const auto request = kRequests.find(name);
    if (request != kRequests.end()) {
        request->second(*this, call.at("instance").get<Instance>(), call.at("argument"));
    }
}

bool Television::press(const std::string& name) {
    const RemoteKey* const found = findKey(name);
    if (found == nullptr) {
        return false;
    }
    key(*found, true);
    key(*found, false);
    return true;
}

void Television::key(const RemoteKey& key, bool isDown) {
    const KeyAction action = manager.key(key, isDown);
    if (action.kind == KeyAction::Kind::nextChannel || action.kind == KeyAction::Kind::previousChannel) {
        zap(action.kind == KeyAction::Kind::nextChannel);
    } else if (action.kind == KeyAction::Kind::page) {
        if (const std::optional<EngineKey> known = engineKey(key)) {
            page->key(known->keysym, known->keycode, isDown);
        } else {
            page->tell("key", {{"keyCode", key.code}, {"down", isDown}});
        }
    }
}

void Television::zap(bool forward) {
    const nlohmann::json channels = broadcast->call("channels", nullptr);
    const std::optional<si::Triplet> presented = broadcast->presented();
    if (channels.empty()) {
        say("channel: there is no channel list yet");
        return;
    }
    const auto current = std::find_if(channels.begin(), channels.end(),
                                      [&](const nlohmann::json& channel) { return tripletOf(channel) == presented; });
    const auto count = static_cast<std::ptrdiff_t>(channels.size());
    const std::ptrdiff_t from = current == channels.end() ? (forward ? -1 : 0) : current - channels.begin();
    nlohmann::json next = channels[static_cast<std::size_t>((from + (forward ? 1 : count - 1)) % count)];
    next["flags"] = 0;
    broadcast->call("tune", next);
}

nlohmann::json Television::state() const {
    nlohmann::json state{{"channel", broadcast->call("presented", nullptr)},
                         {"channels", broadcast->call("channels", nullptr)},
                         {"programmes", broadcast->call("programmes", nullptr)},
                         {"connected", broadcast->isConnected()},
                         {"applications", nlohmann::json::array()},
                         {"running", nullptr}};
    for (const SignalledApplication& application : manager.signalled()) {
        state["applications"].push_back({{"id", applicationIdText(application.id)},
                                         {"name", application.name},
                                         {"url", application.url},
                                         {"control", static_cast<unsigned int>(application.control)}});
    }
    if (const RunningApplication* const running = manager.running()) {
        state["running"] = stateOf(*running);
        state["running"]["url"] = running->url;
        state["running"]["id"] = running->id ? nlohmann::json(applicationIdText(*running->id)) : nlohmann::json();
    }
    return state;
}

std::vector<std::string> Television::applications() const {
    std::vector<std::string> lines;
    for (const SignalledApplication& application : manager.signalled()) {
        lines.push_back(applicationIdText(application.id) + " " + application.name + " " + application.url);
    }
    const RunningApplication* const running = manager.running();
    lines.push_back("running: " + (running == nullptr ? "none" : described(*running)));
    return lines;
}

}  // namespace tvbrowser
