// Session: what a verb works with: the library's interfaces, the events, the output, and the DTV service.
// Threads: one.
// Blocks:  next() until its end.
// Fails:   never.
#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "connection.h"
#include "dvb_section_interface.h"
#include "events.h"
#include "operations.h"
#include "printer.h"
#include "triplet.h"

namespace dvbshell {

enum ExitCode { kDone = 0, kFailed = 1, kUsageError = 2, kNoService = 3 };

class Session {
public:
    Session(Host& newHost, velmora::dtv::DVBSectionInterface& newFilters, EventQueue& newEvents, Printer& newPrinter)
        : host(newHost), filters(newFilters), events(newEvents), printer(newPrinter), connection(newHost.api) {}

    /// The next event of a queue. None at `until`, after Ctrl-C, when the output cannot be written, and when the
    /// service goes, unless `evenWithoutService`. Tells when the service goes and comes back.
    std::optional<Event> next(EventQueue& queue, Clock::time_point until, bool evenWithoutService = false);
    /// Gives each event to `take` until none comes for `quiet`, and at the latest until `end`.
    void takeUntilQuiet(Clock::duration quiet, Clock::time_point end, const std::function<void(const Event&)>& take);
    /// Tells the DTV service, once, that a browser has started. The service then sends what it knows of the channel. It
    /// does so when a browser connects, too, but the library loses the events that come before it has started. What
    /// came twice is dropped.
    void announce();
    /// Prints an event with the current channel.
    void print(const Event& event);
    /// Prints events until none comes for `quiet`, and at the latest until `end`.
    void printUntilQuiet(Clock::duration quiet, Clock::time_point end);
    /// Prints what has come, without waiting.
    void printWaiting();
    /// Prints the lines, or in JSON one object: the report with this name, which has these values.
    void report(const std::vector<std::string>& lines, const char* name,
                std::vector<message_fields::FieldValue> values);
    /// Tells when the service has gone or has come back. True if it did. Looks from time to time, or `now`.
    bool noteConnection(bool now = false);
    /// The presented channel, if the library knows it.
    std::optional<Triplet> presented() const;
    /// Waits a moment for the presented channel. The library learns it without an event for listeners.
    void awaitChannel() const;
    bool outputFailed() const;

    Host& host;
    velmora::dtv::DVBSectionInterface& filters;
    EventQueue& events;
    Printer& printer;
    Connection connection;
    std::set<std::string> knownChannels;  ///< triplets that have been seen, for completion
    std::FILE* output = stdout;
    bool json = false;
    bool atPrompt = false;

private:
    bool announced = false;
};

/// A line on standard error, "dvbshell: TEXT", or at the prompt a line of the shell. Returns kFailed.
int fail(Session& session, const std::string& text);
/// The same for what did not come in time. After Ctrl-C there is no line, because the user ended the wait.
int failInTime(Session& session, const std::string& text);

}  // namespace dvbshell
