// Tuning through services.
#include "demo.h"

#include <algorithm>
#include <set>
#include <utility>

#include "interrupt.h"
#include "si/tables.h"
#include "terminal.h"
#include "tuning.h"

namespace dvbshell {

namespace {

/// How long to wait for an EIT, counted from the tune. An EIT is optional.
constexpr std::chrono::milliseconds kForEit{2500};
constexpr std::chrono::milliseconds kWithoutPmt{1500};
constexpr std::chrono::milliseconds kBetweenTries{500};
/// Without an event for this long, no more events of the current service are expected.
constexpr std::chrono::milliseconds kQuiet{150};
/// Some events never pause.
constexpr std::chrono::seconds kLongestUntilQuiet{1};

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
    Demo(Session& newSession, AitReplay newReplay, Clock::duration newLongest)
        : session(newSession), printer(session.printer), replay(std::move(newReplay)), longest(newLongest) {}

    /// Whether the user or the end of the DTV service has ended the demonstration.
    bool isOver() const { return isInterrupted() || session.connection.isGone() || session.outputFailed(); }

    /// A browser that starts is told what is presented already. Prints that, so that it does not mix with the answers
    /// to the first tune.
    void showPresented() {
        bool isFirst = true;
        untilQuiet([&](const Event& event) {
            if (std::exchange(isFirst, false)) {
                printer.note("");
                printer.note("--- presented already");
            }
            print(event);
        });
    }

    Arrived tuneTo(const ListedService& service) {
        printer.note("");
        printer.note("--- tuning to " + tripletText(service.triplet) + "  " + service.name +
                     (service.hasPmt ? "" : "  (its PMT is not in this broadcast)"));
        Arrived arrived;
        // The list may name a service that the DTV service has not read yet, so repeat the tune until the channel
        // changes.
        const Clock::time_point begin = Clock::now();
        const Clock::time_point end =
            begin + (service.hasPmt ? longest : std::min<Clock::duration>(longest, kWithoutPmt));
        while (!arrived.channel && Clock::now() < end && !isOver()) {
            startTune(session, kIdTypeDvbTerrestrial, service.triplet);
            watch(service, arrived, std::min(end, Clock::now() + kBetweenTries), true);
        }
        // The catcher delivers each AIT once, so ask for one that it has already delivered.
        if (arrived.channel && !arrived.ait && handedOn.count(tripletText(service.triplet)) != 0) {
            replay(service.triplet);
        }
        watch(service, arrived, end, false);
        watchForEit(service, arrived, std::min(end, begin + kForEit));
        takeTheRest(service, arrived);
        return arrived;
    }

    /// Tunes to a service again and asks the catcher for its stored AIT.
    void comeBackTo(const ListedService& service) {
        printer.note("");
        printer.note("--- back to " + tripletText(service.triplet) + "  " + service.name + ", its AIT from memory");
        startTune(session, kIdTypeDvbTerrestrial, service.triplet);
        Arrived arrived;
        const Clock::time_point end = Clock::now() + kWithoutPmt;
        watch(service, arrived, end, true);
        replay(service.triplet);
        while (!arrived.ait && take(service, arrived, end)) {
        }
        takeTheRest(service, arrived);
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
        const std::optional<Event> event = session.next(session.events, end);
        if (!event) {
            return false;
        }
        print(*event);
        note(*event, service.triplet, arrived);
        return true;
    }

    void takeTheRest(const ListedService& service, Arrived& arrived) {
        untilQuiet([&](const Event& event) {
            print(event);
            note(event, service.triplet, arrived);
        });
    }

    void untilQuiet(const std::function<void(const Event&)>& take) {
        session.takeUntilQuiet(kQuiet, Clock::now() + kLongestUntilQuiet, take);
    }

    void print(const Event& event) {
        session.print(event);
        if (event.kind == EventKind::application) {
            handedOn.insert(tripletText(tripletOf(event).value_or(Triplet())));
        }
    }

    Session& session;
    Printer& printer;
    AitReplay replay;
    Clock::duration longest;
    std::set<std::string> handedOn;  // channels whose AIT the catcher has delivered
};

std::string mark(bool arrived, bool expected) {
    return arrived ? "yes" : expected ? "NO" : "-";
}

std::string padded(const std::string& text, std::size_t width) {
    const std::size_t columns = columnsOf(text);
    return text + std::string(columns < width ? width - columns : 1, ' ');
}

/// The triplet and the name of a service in columns.
std::string labelOf(const ListedService& service) {
    return padded(tripletText(service.triplet), 22) + padded(service.name.empty() ? "-" : service.name, 30);
}

class Summary {
public:
    Summary(Printer& newPrinter, Clock::duration longest)
        : printer(newPrinter), time(std::to_string(std::chrono::duration_cast<std::chrono::seconds>(longest).count())) {
        printer.note("");
        printer.note(padded("service", 22) + padded("name", 30) + "channel  PMT  EIT  AIT");
    }

    void add(const ListedService& service, const Arrived& arrived) {
        printer.note(labelOf(service) + padded(mark(arrived.channel, true), 9) +
                     padded(mark(arrived.pmt, service.hasPmt), 5) + padded(mark(arrived.eit, false), 5) +
                     mark(arrived.ait, service.signalsAit));
        const std::string name = tripletText(service.triplet) + (service.name.empty() ? "" : " (" + service.name + ")");
        miss(!arrived.channel, "no channel change arrived for " + name);
        miss(service.hasPmt && !arrived.pmt, "no PMT arrived in " + time + " s for " + name);
        miss(service.signalsAit && !arrived.ait,
             "no AIT arrived in " + time + " s for " + name + ", whose PMT signals one");
        anyAit = anyAit || arrived.ait || service.signalsAit;
    }
    void addUntried(const ListedService& service) {
        printer.note(labelOf(service) + "not tried");
        untried = true;
    }

    int finish(const DemoPlan& plan) {
        miss(plan.anyAitExpected && !anyAit && !untried, "no service of this broadcast signals an HbbTV AIT");
        printer.note("");
        for (const std::string& text : missing) {
            printer.note("missing: " + text);
        }
        const bool good = missing.empty() && !untried;
        printer.note(untried ? "ended before everything was tried" : good ? "all arrived" : "not all arrived");
        return good ? kDone : kFailed;
    }

private:
    void miss(bool isMissing, const std::string& text) {
        if (isMissing) {
            missing.push_back(text);
        }
    }

    Printer& printer;
    std::string time;
    std::vector<std::string> missing;
    bool anyAit = false;
    bool untried = false;
};

/// The services of the broadcast: what is shown, and what is not.
void printPlan(Printer& printer, const DemoPlan& plan) {
    for (const ListedService& service : plan.shown) {
        printer.note("shown     " + padded(tripletText(service.triplet), 22) + service.name);
    }
    for (const DemoPlan::LeftOut& each : plan.leftOut) {
        printer.note("left out  " + labelOf(each.service) + each.reason);
    }
}

}  // namespace

int runDemo(Session& session, const DemoPlan& plan, const AitReplay& replay, Clock::duration longest) {
    printPlan(session.printer, plan);
    Demo demo(session, replay, longest);
    demo.showPresented();
    std::vector<Arrived> arrived;
    for (const ListedService& service : plan.shown) {
        if (demo.isOver()) {
            break;
        }
        arrived.push_back(demo.tuneTo(service));
    }
    // What was interrupted was not tried to the end.
    if (demo.isOver() && !arrived.empty()) {
        arrived.pop_back();
    }
    const auto first = std::find_if(arrived.begin(), arrived.end(), [](const Arrived& each) { return each.ait; });
    if (first != arrived.end() && !demo.isOver()) {
        demo.comeBackTo(plan.shown[static_cast<std::size_t>(first - arrived.begin())]);
    }
    Summary summary(session.printer, longest);
    for (std::size_t index = 0; index < plan.shown.size(); ++index) {
        if (index < arrived.size()) {
            summary.add(plan.shown[index], arrived[index]);
        } else {
            summary.addUntried(plan.shown[index]);
        }
    }
    const int result = summary.finish(plan);
    return session.connection.isGone() ? kNoService : result;
}

}  // namespace dvbshell
