// Starts and ends applications.
#include "application_manager.h"

#include <utility>

#include "application_url.h"

namespace tvbrowser {

namespace {

std::string nameOf(const RunningApplication& application) {
    return "application " + (application.id ? applicationIdText(*application.id) : application.url);
}

}  // namespace

ApplicationManager::ApplicationManager(ApplicationHost& newHost, const Terminal& newTerminal)
    : host(newHost), terminal(newTerminal) {}

const RunningApplication* ApplicationManager::running() const {
    return life ? &life->application : nullptr;
}

void ApplicationManager::begin(RunningApplication application, std::vector<std::string> otherUrls) {
    if (life) {
        host.log(nameOf(life->application) + " ends: another takes its place");
    }
    application.instance = ++lastInstance;
    life.emplace();
    life->keyset = Keyset::initial(application.isBroadcastRelated);
    life->reportsStart = application.isBroadcastRelated;
    life->application = std::move(application);
    life->otherUrls = std::move(otherUrls);
    host.log(nameOf(life->application) + " starts: " + life->application.url);
    host.load(life->application);
}

bool ApplicationManager::refuse(const std::string& why) {
    host.log("not started: " + why);
    return false;
}

bool ApplicationManager::isStartable(const SignalledApplication& application) {
    const std::string obstacle = obstacleTo(application, terminal);
    return obstacle.empty() || refuse(obstacle);
}

void ApplicationManager::startSignalled(const SignalledApplication& application, const std::vector<std::string>& urls) {
    RunningApplication started;
    started.id = application.id;
    started.name = application.name;
    started.url = urls.front();
    started.boundaries = application.boundaries;
    started.isServiceBound = application.isServiceBound;
    started.isBroadcastRelated = true;
    begin(std::move(started), {urls.begin() + 1, urls.end()});
}

bool ApplicationManager::start(const ApplicationId& id) {
    const SignalledApplication* const application = findRunnable(ait, id);
    if (application == nullptr) {
        return refuse("application " + applicationIdText(id) + " is not signalled, or may not run");
    }
    if (!isStartable(*application)) {
        return false;
    }
    startSignalled(*application, entryPoints(*application));
    return true;
}

bool ApplicationManager::startIndependent(const std::string& url, const std::optional<ApplicationId>& id) {
    if (!originOf(url)) {
        return refuse("\"" + url + "\" is no complete URL");
    }
    if (isDvbUrl(url)) {
        return refuse(url + ": only a signalled application can be in a carousel");
    }
    RunningApplication started;
    started.id = id;
    started.url = url;
    begin(std::move(started));
    return true;
}

bool ApplicationManager::createApplication(Instance caller, const std::string& url) {
    if (!isRunning(caller)) {
        return refuse(url + ": the application that asks has ended");
    }
    std::string error;
    const std::optional<RequestedStart> start = requestedStart(url, ait, terminal, error);
    if (!start) {
        return refuse(error);
    }
    if (start->application == nullptr) {
        return startIndependent(start->urls.front());
    }
    startSignalled(*start->application, start->urls);
    return true;
}

void ApplicationManager::end(const std::string& why) {
    host.log(nameOf(life->application) + " ends: " + why);
    life.reset();
    host.unload();
}

void ApplicationManager::endForGood(const std::string& why) {
    for (const SignalledApplication& one : ait) {
        if (one.control == ControlCode::autostart && !isDeclined(one.id)) {
            declined.push_back(one.id);
        }
    }
    end(why);
}

void ApplicationManager::fail(const std::string& why) {
    if (life->reportsStart && !life->hasReported) {
        host.reportStarted(false);
    }
    endForGood(why);
}

void ApplicationManager::destroyApplication(Instance caller) {
    if (isRunning(caller)) {
        endForGood("it ended itself");
    }
}

void ApplicationManager::exit() {
    if (life) {
        endForGood("the user left it");
    }
}

bool ApplicationManager::mayGoOnTo(Instance caller, const std::string& url) const {
    return isRunning(caller) && isWithinBoundary(url, life->application);
}

void ApplicationManager::leftBoundary(Instance caller, const std::string& url) {
    if (isRunning(caller)) {
        host.log(nameOf(life->application) + " goes on to " + url + ", outside of its boundary");
        startIndependent(url);
    }
}

void ApplicationManager::pageLoaded(Instance instance) {
    if (!isRunning(instance) || life->isLoaded) {
        return;
    }
    life->isLoaded = true;
    host.log(nameOf(life->application) + " is loaded");
    // One that is loaded again after its process died has not been started again.
    if (life->reportsStart && !life->hasReported) {
        life->hasReported = true;
        host.reportStarted(true);
    }
}

void ApplicationManager::loadFailed(Instance instance, const std::string& reason) {
    if (!isRunning(instance)) {
        return;
    }
    if (life->isLoaded) {
        host.log(nameOf(life->application) + " stays, but a page of it does not load: " + reason);
        return;
    }
    if (life->otherUrls.empty()) {
        fail("its page does not load: " + reason);
    } else {
        loadByNextTransport(reason);
    }
}

void ApplicationManager::loadByNextTransport(const std::string& reason) {
    RunningApplication& application = life->application;
    application.url = life->otherUrls.front();
    life->otherUrls.erase(life->otherUrls.begin());
    host.log(nameOf(application) + " is loaded from " + application.url + ": its page does not load: " + reason);
    host.load(application);
}

void ApplicationManager::xmlAitReceived(Instance instance, const Applications& applications) {
    if (!isRunning(instance) || life->isLoaded) {
        return;
    }
    RunningApplication& application = life->application;
    if (application.isBroadcastRelated || std::exchange(life->isByXmlAit, true)) {
        fail("an XML AIT is not the page that an AIT leads to");
        return;
    }
    const SignalledApplication* const best = bestOf(applications, [this](const SignalledApplication& one) {
        return one.control == ControlCode::autostart && isStartable(one);
    });
    if (best == nullptr) {
        fail("its XML AIT has no AUTOSTART application that can be started here");
        return;
    }
    host.log(nameOf(application) + " is " + applicationIdText(best->id) + ", by its XML AIT: " + best->url);
    application.id = best->id;
    application.name = best->name;
    application.url = best->url;
    application.boundaries = best->boundaries;
    host.load(application);
}

void ApplicationManager::webProcessDied(Instance instance) {
    if (!isRunning(instance)) {
        return;
    }
    if (life->hasRestarted) {
        fail("its web process died again");
        return;
    }
    host.log(nameOf(life->application) + " is loaded again: its web process died");
    ApplicationLife again;
    again.application = life->application;
    again.application.isVisible = false;
    again.keyset = Keyset::initial(again.application.isBroadcastRelated);
    again.otherUrls = life->otherUrls;
    again.reportsStart = life->reportsStart;
    again.hasReported = life->hasReported;
    again.isByXmlAit = life->isByXmlAit;
    again.hasRestarted = true;
    life = std::move(again);
    host.load(life->application);
}

}  // namespace tvbrowser
