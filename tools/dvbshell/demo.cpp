// Tuning through services.
#include "demo.h"

#include <algorithm>
#include <set>
#include <sstream>

#include "si/tables.h"

namespace dvbshell {

namespace {

constexpr std::size_t kMostServices = 4;
constexpr int kIdTypeDvbTerrestrial = 12;
constexpr std::chrono::seconds kLongestForTables{8};
/// How long to wait for an EIT, counted from the tune. An EIT is optional.
constexpr std::chrono::milliseconds kForEit{2500};
constexpr std::chrono::milliseconds kWithoutPmt{1500};
constexpr std::chrono::milliseconds kBetweenTries{500};
/// Without an event for this long, no more events of the current service are expected.
constexpr std::chrono::milliseconds kQuiet{150};

/// What has arrived for a service.
struct Arrived {
    bool channel = false;
    bool pmt = false;
    bool eit = false;
    bool ait = false;
};

bool sameService(const Event& event, const Triplet& triplet) {
    return event.tsid == triplet.tsid && event.sid == triplet.sid;
}

void note(const Event& event, const Triplet& triplet, Arrived& arrived) {
    switch (event.kind) {
        case EventKind::channel:
            arrived.channel = arrived.channel || (event.started && sameService(event, triplet));
            break;
        case EventKind::pmt:
            arrived.pmt = arrived.pmt || sameService(event, triplet);
            break;
        case EventKind::application:
            arrived.ait = arrived.ait || sameService(event, triplet);
            break;
        case EventKind::eit: {
            std::string error;
            const std::optional<si::Eit> eit = si::parseEit(event.section, error);
            arrived.eit = arrived.eit || (eit && eit->serviceId == triplet.sid);
            break;
        }
        default:
            break;
    }
}

class Demo {
public:
    Demo(velmora::dtv::DvbAPIInterface& newApi, EventQueue& newQueue, Printer& newPrinter, AitReplay newReplay,
         Clock::time_point newLatest)
        : api(newApi), queue(newQueue), printer(newPrinter), replay(std::move(newReplay)), latest(newLatest) {}

    Arrived tuneTo(const ListedService& service) {
        printer.note("");
        printer.note("--- tuning to " + tripletText(service.triplet) + "  " + service.name +
                     (service.hasPmt ? "" : "  (its PMT is not in this broadcast)"));
        Arrived arrived;
        // The list may name a service that the DTV service has not read yet, so repeat the tune until the channel
        // changes.
        const Clock::time_point begin = Clock::now();
        const Clock::time_point end =
            std::min(latest, begin + (service.hasPmt ? Clock::duration(kLongestForTables) : kWithoutPmt));
        while (!arrived.channel && Clock::now() < end) {
            api.tuneToService(kIdTypeDvbTerrestrial, service.triplet.onid, service.triplet.tsid, service.triplet.sid,
                              0);
            watch(service, arrived, std::min(end, Clock::now() + kBetweenTries), true);
        }
        // The catcher delivers each AIT once, so ask for one that it has already delivered.
        if (arrived.channel && !arrived.ait && handedOn.count(tripletText(service.triplet)) != 0) {
            replay(service.triplet);
        }
        watch(service, arrived, end, false);
        watchForEit(service, arrived, std::min(latest, begin + kForEit));
        while (Clock::now() < latest && take(service, arrived, Clock::now() + kQuiet)) {
        }
        return arrived;
    }

    /// Tunes to a service again and asks the catcher for its stored AIT.
    void comeBackTo(const ListedService& service) {
        printer.note("");
        printer.note("--- back to " + tripletText(service.triplet) + "  " + service.name + ", its AIT from memory");
        api.tuneToService(kIdTypeDvbTerrestrial, service.triplet.onid, service.triplet.tsid, service.triplet.sid, 0);
        Arrived arrived;
        const Clock::time_point end = std::min(latest, Clock::now() + kWithoutPmt);
        watch(service, arrived, end, true);
        replay(service.triplet);
        while (!arrived.ait && take(service, arrived, end)) {
        }
        while (take(service, arrived, std::min(latest, Clock::now() + kQuiet))) {
        }
        if (!arrived.ait) {
            printer.note("nothing is stored of it: its AIT has version 0, or more than has come");
        }
    }

private:
    static bool complete(const ListedService& service, const Arrived& arrived) {
        return arrived.channel && (arrived.pmt || !service.hasPmt) && (arrived.ait || !service.signalsAit);
    }

    void watch(const ListedService& service, Arrived& arrived, Clock::time_point end, bool channelOnly) {
        while (!(channelOnly ? arrived.channel : complete(service, arrived) && service.hasPmt)) {
            if (!take(service, arrived, end)) {
                return;
            }
        }
    }

    void watchForEit(const ListedService& service, Arrived& arrived, Clock::time_point end) {
        while (!arrived.eit && take(service, arrived, end)) {
        }
    }

    bool take(const ListedService& service, Arrived& arrived, Clock::time_point end) {
        const std::optional<Event> event = queue.take(end);
        if (!event) {
            return false;
        }
        printer.print(*event, api.getCurrentCCID());
        note(*event, service.triplet, arrived);
        if (event->kind == EventKind::application) {
            handedOn.insert(tripletText({event->onid, event->tsid, event->sid}));
        }
        return true;
    }

    velmora::dtv::DvbAPIInterface& api;
    EventQueue& queue;
    Printer& printer;
    AitReplay replay;
    Clock::time_point latest;
    std::set<std::string> handedOn;  // channels whose AIT the catcher has delivered
};

std::string mark(bool arrived, bool expected) {
    return arrived ? "yes" : expected ? "NO" : "-";
}

/// Pads to a width in characters, not bytes, because names are UTF-8.
std::string padded(const std::string& text, std::size_t width) {
    const auto characters = static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
    return text + std::string(characters < width ? width - characters : 1, ' ');
}

class Summary {
public:
    explicit Summary(Printer& newPrinter) : printer(newPrinter) {
        printer.note("");
        printer.note(padded("service", 22) + padded("name", 30) + "channel  PMT  EIT  AIT");
    }

    void add(const ListedService& service, const Arrived& arrived) {
        printer.note(padded(tripletText(service.triplet), 22) + padded(service.name.empty() ? "-" : service.name, 30) +
                     padded(mark(arrived.channel, true), 9) + padded(mark(arrived.pmt, service.hasPmt), 5) +
                     padded(mark(arrived.eit, false), 5) + mark(arrived.ait, service.signalsAit));
        const std::string name = tripletText(service.triplet) + (service.name.empty() ? "" : " (" + service.name + ")");
        miss(!arrived.channel, "no channel change arrived for " + name);
        miss(service.hasPmt && !arrived.pmt, "no PMT arrived for " + name);
        miss(service.signalsAit && !arrived.ait, "no AIT arrived for " + name + ", whose PMT signals one");
        anyPmt = anyPmt || arrived.pmt;
        anyAit = anyAit || arrived.ait;
    }

    int finish() {
        miss(!anyPmt, "no PMT arrived at all");
        miss(!anyAit, "no HbbTV AIT in this broadcast, or none arrived");
        printer.note("");
        for (const std::string& text : missing) {
            printer.note("missing: " + text);
        }
        printer.note(missing.empty() ? "all arrived" : "not all arrived");
        return missing.empty() ? 0 : 1;
    }

private:
    void miss(bool isMissing, const std::string& text) {
        if (isMissing) {
            missing.push_back(text);
        }
    }

    Printer& printer;
    std::vector<std::string> missing;
    bool anyPmt = false;
    bool anyAit = false;
};

}  // namespace

bool parseServiceList(const std::string& text, std::vector<ListedService>& services, std::string& error) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const std::vector<std::string> parts = split(line, '\t');
        ListedService service;
        if (parts.size() != 4 || !parseTriplet(parts[0], service.triplet)) {
            error = "\"" + line + "\" is no line of a service list";
            return false;
        }
        service.hasPmt = parts[1] == "pmt";
        service.signalsAit = parts[2] == "hbbtv";
        service.name = parts[3];
        services.push_back(service);
    }
    return true;
}

std::vector<ListedService> chooseServices(const std::vector<ListedService>& listed) {
    const auto rank = [](const ListedService& service) { return service.signalsAit ? 0 : service.hasPmt ? 1 : 2; };
    std::vector<ListedService> chosen = listed;
    std::stable_sort(chosen.begin(), chosen.end(),
                     [&rank](const auto& left, const auto& right) { return rank(left) < rank(right); });
    const auto withPmt = static_cast<std::size_t>(
        std::count_if(listed.begin(), listed.end(), [](const auto& service) { return service.hasPmt; }));
    // One service without a PMT shows what that looks like. At least two services, so that the channel changes.
    const std::size_t wanted = std::min(kMostServices, std::max<std::size_t>(withPmt + 1, 2));
    chosen.resize(std::min(chosen.size(), wanted));
    return chosen;
}

int runDemo(velmora::dtv::DvbAPIInterface& api, EventQueue& queue, Printer& printer,
            const std::vector<ListedService>& services, const AitReplay& replay, Clock::duration longest) {
    Demo demo(api, queue, printer, replay, Clock::now() + longest);
    std::vector<Arrived> arrived;
    for (const ListedService& service : services) {
        arrived.push_back(demo.tuneTo(service));
    }
    const auto first = std::find_if(arrived.begin(), arrived.end(), [](const Arrived& each) { return each.ait; });
    if (first != arrived.end()) {
        demo.comeBackTo(services[static_cast<std::size_t>(first - arrived.begin())]);
    }
    Summary summary(printer);
    for (std::size_t index = 0; index < services.size(); ++index) {
        summary.add(services[index], arrived[index]);
    }
    return summary.finish();
}

}  // namespace dvbshell
