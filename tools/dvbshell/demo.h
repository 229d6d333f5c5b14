// The demonstration: tunes to one service after another, shows what arrives for each, and prints a summary.
// Threads: one; events come through the queue.
// Blocks:  until everything has arrived, or the time of each service is up.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "session.h"

namespace dvbshell {

/// A service in the list that `dtvserviced --list` prints.
struct ListedService {
    Triplet triplet;
    bool hasPmt = false;      ///< its PMT is in the broadcast
    bool signalsAit = false;  ///< its PMT signals an HbbTV AIT
    std::string name;
};

/// Reads the list that the reference service prints. False, with the reason, when a line is malformed.
bool parseServiceList(const std::string& text, std::vector<ListedService>& services, std::string& error);

/// The services of a demonstration, and the others with the reason why they are left out.
struct DemoPlan {
    struct LeftOut {
        ListedService service;
        std::string reason;
    };
    std::vector<ListedService> shown;
    std::vector<LeftOut> leftOut;
    bool anyAitExpected = true;  ///< false when the user has chosen services without one
};

/// At most four services: first services with an AIT, then services with a PMT, then one without a PMT.
DemoPlan planDemo(const std::vector<ListedService>& listed);
/// The services that the user wants, in that order. An unknown network, 65535, matches any. False, with the reason,
/// when the list lacks one.
bool planDemo(const std::vector<ListedService>& listed, const std::vector<Triplet>& wanted, DemoPlan& plan,
              std::string& error);

/// Asks the AIT catcher for the stored AIT of a channel.
using AitReplay = std::function<void(const Triplet&)>;

/// How long to wait for the tables of one service.
constexpr std::chrono::seconds kLongestForService{15};

/// Returns kDone when each service's channel change, each PMT of the broadcast and each signalled AIT arrived, and at
/// least one AIT if one is expected. What has not arrived after `longest` is missing. An AIT counts when the catcher
/// delivers it. At the end the demonstration returns to the first service with an AIT and asks the catcher for the
/// stored one.
int runDemo(Session& session, const DemoPlan& plan, const AitReplay& replay, Clock::duration longest);

}  // namespace dvbshell
