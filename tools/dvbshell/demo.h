// The demonstration: tunes through services and watches what arrives for each, then sums up.
// Threads: one; events come through the queue.
// Blocks:  until it has seen everything or its time is up.
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

/// A service as the list of the broadcast tells it.
struct ListedService {
    Triplet triplet;
    bool hasPmt = false;      ///< its PMT is in the broadcast
    bool signalsAit = false;  ///< its PMT signals an HbbTV AIT
    std::string name;
};

/// Reads the lines that the reference service lists; false, with the reason, for a line that is none.
bool parseServiceList(const std::string& text, std::vector<ListedService>& services, std::string& error);

/// Which services the demonstration tunes to, in order: those with AIT, then those with PMT, then one of the rest; four
/// at most.
std::vector<ListedService> chooseServices(const std::vector<ListedService>& listed);

/// Asks the AIT catcher for what it has stored of a channel.
using AitReplay = std::function<void(const Triplet&)>;

/// No demonstration takes longer.
constexpr std::chrono::seconds kLongestDemo{20};

/// 0 when channel, PMT and every signalled AIT arrived for each service that has a PMT, and at least one AIT did. What
/// has not come after `longest` in all is missing. An AIT counts when the catcher has handed it on. At the end it goes
/// back to the first service with one, whose AIT then comes from memory.
int runDemo(velmora::dtv::DvbAPIInterface& api, EventQueue& queue, Printer& printer,
            const std::vector<ListedService>& services, const AitReplay& replay, Clock::duration longest);

}  // namespace dvbshell
