// Cursor: walks through a lane of a recorded browser while a live one sends its commands, and says what the live one is
// told, and when. It keeps no time of its own: run() says when it wants to be run again.
// Threads: one at a time.
// Blocks:  never.
// Fails:   never; what differs from the recording is told to the stage.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "lanes.h"
#include "made_values.h"
#include "recording.h"

namespace dtvservice {

struct Pace {
    /// How long a recorded command may be late until the cursor goes on without it.
    static constexpr std::chrono::seconds kWait{5};
    static constexpr std::chrono::seconds kFastWait{1};

    bool isFast = false;  ///< without the recorded pauses
    std::chrono::milliseconds wait = kWait;
};

/// Where the cursor's steps happen. A call must not use the cursor.
class Stage {
public:
    Stage() = default;
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;
    virtual ~Stage() = default;

    virtual void event(const message_fields::Message& message, const std::vector<message_fields::Value>& values) = 0;
    /// False if there is no room for it now.
    virtual bool section(const std::string& filter, const std::string& bytes) = 0;
    /// There was no room for as long as the cursor waits.
    virtual void sectionLost(const std::string& filter, const std::string& bytes) = 0;
    /// A step that only those who watch see: what was refused, dropped or not sent.
    virtual void seen(const RecordedStep& step, const std::string& filter) = 0;
    /// The cursor goes on without this command.
    virtual void missed(const RecordedStep& command) = 0;
    /// The recorded browser disconnects here.
    virtual void left() = 0;
};

class Cursor {
public:
    using Time = std::chrono::steady_clock::time_point;
    using Values = MadeValues::Values;

    static constexpr std::size_t kNoRecord = ~std::size_t{0};

    /// The lane's browser, the values, which all lanes of a browser share, and the stage must outlive the cursor.
    Cursor(Lane newLane, Pace newPace, MadeValues& newMade, Stage& newStage, Time now);

    /// What a live command is in the recording.
    enum class Found {
        next,   ///< the next command of the recording
        early,  ///< a later one; it is kept until the cursor reaches it
        late,   ///< one that the cursor has gone on without: nothing answers it any more
        none,
    };
    Found take(const message_fields::Message& command, const Values& values);

    /// Does all that is due. Run it again at the returned time, and after each command; nothing if only a command or
    /// nothing at all can follow. What was recorded after `barrier`, a command that has not come, stays, but not what a
    /// filter gets.
    std::optional<Time> run(Time now, std::size_t barrier = kNoRecord);
    /// A command of another lane was passed: what was recorded before it is due, and the rest follows it.
    void follow(const RecordedStep& command, Time now) { origin = {command.record, command.time, now}; }
    /// The record of the next command that has not come.
    std::size_t awaitedRecord() const;
    /// The last command that was passed; null before the first.
    const RecordedStep* lastCommand() const { return last; }

    /// Steps that are done, of all().
    std::size_t done() const { return position; }
    std::size_t all() const { return lane.steps.size(); }
    bool isAtEnd() const { return position == all(); }
    /// The step that the cursor waits for; not at the end.
    const RecordedStep& current() const { return *lane.steps[position]; }

private:
    Time dueOf(const RecordedStep& step) const;
    std::optional<Time> runStep(const RecordedStep& step, Time now, std::size_t barrier);
    std::optional<Time> runCommand(const RecordedStep& step, Time now);
    std::optional<Time> runSection(const RecordedStep& step, Time now);
    void sendEvent(const RecordedStep& step);
    void pass(Time at);
    bool hurries() const { return pace.isFast || awaited != 0; }

    struct Origin {
        std::size_t record = 0;
        std::uint64_t recorded = 0;
        Time live;
    };

    bool isBehind(const RecordedStep& step, std::size_t barrier) const;

    const Lane lane;
    const Pace pace;
    MadeValues& made;
    Stage& stage;
    Origin origin;
    const RecordedStep* last = nullptr;
    std::size_t position = 0;
    Time reached;                   // when the step before was done
    std::set<std::size_t> free;     // commands that no live command has stood for
    std::size_t awaited = 0;        // commands ahead that their browser's thread waits for
    std::size_t sinceBreak = 0;     // bytes
    std::optional<Time> fullSince;  // the section's queue
};

/// Whether the browser's thread sleeps until this command is answered.
bool isWaitedFor(const message_fields::Message& command);

}  // namespace dtvservice
