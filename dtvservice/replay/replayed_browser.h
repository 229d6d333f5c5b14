// ReplayedBrowser: a live browser on its way through a recorded one.
// Threads: the loop's.
// Blocks:  never.
// Fails:   never; what differs from the recording is told to the stage.
#pragma once

#include <deque>
#include <optional>

#include "browser_stage.h"
#include "cursor.h"

namespace dtvservice {

class ReplayedBrowser {
public:
    using Time = Cursor::Time;

    /// The recorded browser must outlive this object. `newRound`: how often its program's were replayed before.
    ReplayedBrowser(const RecordedBrowser& newRecorded, std::size_t newRound, Pace pace, Browsers& browsers,
                    BusTap& tap, Browser browser);
    ReplayedBrowser(const ReplayedBrowser&) = delete;
    ReplayedBrowser& operator=(const ReplayedBrowser&) = delete;

    /// Of what is no filter's.
    const Cursor& main() const { return cursors.front(); }
    Cursor::Found take(const message_fields::Message& command, const Cursor::Values& values);
    /// Does all that is due in front of the barrier; returns when the next is.
    std::optional<Time> run(Time now, std::size_t barrier);
    /// Whether both were recorded at the same time, and are replayed together.
    bool isBeside(const ReplayedBrowser& other) const;
    /// A command of another one that is beside this was passed.
    void follow(const RecordedStep& command, Time now) { cursors.front().follow(command, now); }
    /// Steps that are done, of all().
    std::size_t done() const;
    std::size_t all() const;

    const RecordedBrowser& recorded;
    BrowserStage stage;
    // What the others know.
    std::size_t awaited = Cursor::kNoRecord;
    const RecordedStep* last = nullptr;
    std::optional<Time> wakeUp;  // when a task runs it
    bool hasToldEnd = false;

private:
    const std::size_t round;
    MadeValues made;
    std::deque<Cursor> cursors;  // the first is main()
};

}  // namespace dtvservice
