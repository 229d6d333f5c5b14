// The demonstration: tunes to one service after another, shows what arrives for each, and prints a summary.
// Threads: one; events come through the queue.
// Blocks:  until everything has arrived or the time is up.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "dvb_api_interface.h"
#include "events.h"
#include "printer.h"
#include "triplet.h"

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

/// The services that the demonstration tunes to, at most four: first services with an AIT, then services with a PMT,
/// then one without a PMT.
std::vector<ListedService> chooseServices(const std::vector<ListedService>& listed);

/// Asks the AIT catcher for the stored AIT of a channel.
using AitReplay = std::function<void(const Triplet&)>;

/// The limit for a whole demonstration.
constexpr std::chrono::seconds kLongestDemo{20};

/// Returns 0 when each service's channel change, each PMT of the broadcast and each signalled AIT arrived, and at least
/// one PMT and one AIT. What has not arrived after `longest` is missing. An AIT counts when the catcher delivers it. At
/// the end the demonstration returns to the first service with an AIT and asks the catcher for the stored one.
int runDemo(velmora::dtv::DvbAPIInterface& api, EventQueue& queue, Printer& printer,
            const std::vector<ListedService>& services, const AitReplay& replay, Clock::duration longest);

}  // namespace dvbshell
