// ScenarioRunner: does the steps of a scenario when they are due, and ends what lasts.
// Threads: the loop's.
// Blocks:  never, unless a step does.
// Fails:   a step that cannot be done is told with the reason, and the scenario goes on.
#pragma once

#include <functional>
#include <set>

#include "event_loop.h"
#include "scenario.h"

namespace dtvservice {

/// Identifies what a step has begun.
using FaultId = std::uint64_t;

/// What steps do to the service.
class StepActions {
public:
    StepActions() = default;
    StepActions(const StepActions&) = delete;
    StepActions& operator=(const StepActions&) = delete;
    virtual ~StepActions() = default;

    /// Returns why it cannot be done; empty if it is done. `asker`: the browser whose command the step is upon, or 0.
    virtual std::string begin(const Step& step, std::uint32_t asker, FaultId id) = 0;
    /// Ends a fault; one that is over already is ignored.
    virtual void undo(FaultId id) = 0;
    virtual void undoAll() = 0;
};

class ScenarioRunner {
public:
    using Clock = EventLoop::Clock;

    /// The loop's, or a test's.
    struct Time {
        std::function<Clock::time_point()> now;
        std::function<void(Clock::time_point time, EventLoop::Task task)> postAt;
    };
    /// A step that has been done, or was not.
    struct Done {
        std::size_t step;
        Step::Duration elapsed;  ///< since the scenario's start
        std::string problem;     ///< empty if it was done
    };
    struct Listener {
        std::function<void(const Done& done)> done;
        std::function<void()> ended;
    };

    /// The actions must outlive this object, and the time run no task after it ends.
    ScenarioRunner(StepActions& newActions, Time newTime, Listener newListener)
        : actions(newActions), time(std::move(newTime)), listener(std::move(newListener)) {}
    ScenarioRunner(const ScenarioRunner&) = delete;
    ScenarioRunner& operator=(const ScenarioRunner&) = delete;

    /// Steps without a delay are done soon, not now. Undoes what an earlier scenario has left. None may be running.
    void start(Scenario newScenario);
    /// Ends the scenario now, and undoes what lasts, also of one that has ended.
    void stop();
    bool isRunning() const { return running; }
    /// The one that runs, or ran last.
    const Scenario& scenario() const { return scenario_; }

    /// A browser's command is about to be handled.
    void onCommand(std::uint32_t browser, std::uint32_t command);
    /// A fault has ended by itself.
    void onOver(FaultId id);

private:
    struct Progress {
        std::uint64_t commands = 0;  // so far
        bool isDone = false;
    };

    void postAt(Clock::time_point when, EventLoop::Task task);
    void startRound();
    void meet(std::size_t index, std::uint32_t browser);
    void run(std::size_t index, std::uint32_t asker);
    bool isRoundOver() const;
    void look();
    void endRound();
    void end();

    StepActions& actions;
    Time time;
    Listener listener;
    Scenario scenario_;
    bool running = false;
    std::uint64_t generation = 0;  // of rounds; tasks of earlier ones do nothing
    std::uint64_t round = 0;
    Clock::time_point begin;
    Clock::time_point roundBegin;
    std::vector<Progress> progress;  // of each step, in this round
    std::set<FaultId> lasting;       // those with an end
    FaultId lastFault = 0;
};

}  // namespace dtvservice
