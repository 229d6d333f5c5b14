// Chooses the services of a demonstration.
#include <algorithm>
#include <sstream>

#include "demo.h"
#include "si/tables.h"
#include "words.h"

namespace dvbshell {

namespace {

constexpr std::size_t kMostServices = 4;

int rank(const ListedService& service) {
    return service.signalsAit ? 0 : service.hasPmt ? 1 : 2;
}

bool matches(const Triplet& listed, const Triplet& wanted) {
    const bool isNetwork =
        listed.onid == wanted.onid || listed.onid == si::kUnknownNetworkId || wanted.onid == si::kUnknownNetworkId;
    return isNetwork && listed.tsid == wanted.tsid && listed.sid == wanted.sid;
}

std::string reasonFor(const ListedService& service, bool isChosenByUser) {
    return isChosenByUser ? "not chosen" : service.hasPmt ? "enough others" : "its PMT is not in this broadcast";
}

/// Everything that is not shown is left out.
void leaveOutTheRest(const std::vector<ListedService>& listed, bool isChosenByUser, DemoPlan& plan) {
    for (const ListedService& service : listed) {
        const bool isShown = std::any_of(plan.shown.begin(), plan.shown.end(), [&service](const ListedService& each) {
            return each.triplet == service.triplet;
        });
        if (!isShown) {
            plan.leftOut.push_back({service, reasonFor(service, isChosenByUser)});
        }
    }
}

}  // namespace

bool parseServiceList(const std::string& text, std::vector<ListedService>& services, std::string& error) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const std::vector<std::string> parts = split(line, '\t');
        ListedService service;
        const std::optional<Triplet> triplet = si::parseTriplet(parts[0]);
        if (parts.size() != 4 || !triplet) {
            error = "\"" + line + "\" is no line of a service list";
            return false;
        }
        service.triplet = *triplet;
        service.hasPmt = parts[1] == "pmt";
        service.signalsAit = parts[2] == "hbbtv";
        service.name = parts[3];
        services.push_back(service);
    }
    return true;
}

DemoPlan planDemo(const std::vector<ListedService>& listed) {
    DemoPlan plan;
    plan.shown = listed;
    std::stable_sort(plan.shown.begin(), plan.shown.end(),
                     [](const auto& left, const auto& right) { return rank(left) < rank(right); });
    const auto withPmt = static_cast<std::size_t>(
        std::count_if(listed.begin(), listed.end(), [](const auto& service) { return service.hasPmt; }));
    // One service without a PMT shows what that looks like. At least two services, so that the channel changes.
    const std::size_t wanted = std::min(kMostServices, std::max<std::size_t>(withPmt + 1, 2));
    plan.shown.resize(std::min(plan.shown.size(), wanted));
    leaveOutTheRest(listed, false, plan);
    return plan;
}

bool planDemo(const std::vector<ListedService>& listed, const std::vector<Triplet>& wanted, DemoPlan& plan,
              std::string& error) {
    for (const Triplet& each : wanted) {
        const auto found = std::find_if(listed.begin(), listed.end(),
                                        [&each](const auto& service) { return matches(service.triplet, each); });
        if (found == listed.end()) {
            error = "the broadcast has no service " + tripletText(each);
            return false;
        }
        plan.shown.push_back(*found);
    }
    leaveOutTheRest(listed, true, plan);
    plan.anyAitExpected =
        std::any_of(plan.shown.begin(), plan.shown.end(), [](const auto& service) { return service.signalsAit; });
    return true;
}

}  // namespace dvbshell
