// When steps are due.
#include "scenario_runner.h"

#include <algorithm>
#include <utility>

namespace dtvservice {

namespace {

/// Rounds without a length would leave no time for anything else.
constexpr std::chrono::milliseconds kShortestRound{100};

ScenarioRunner::Clock::duration of(Step::Duration duration) {
    return std::chrono::duration_cast<ScenarioRunner::Clock::duration>(duration);
}

/// Whether the fault ends by itself.
bool hasEnd(const Step& step) {
    return step.action->kind == Action::Kind::fault &&
           (step.values.contains("seconds") || step.values.contains("times"));
}

}  // namespace

/// The task is not run once this round has ended.
void ScenarioRunner::postAt(Clock::time_point when, EventLoop::Task task) {
    time.postAt(when, [this, task = std::move(task), of = generation] {
        if (of == generation) {
            task();
        }
    });
}

void ScenarioRunner::start(Scenario newScenario) {
    actions.undoAll();
    scenario_ = std::move(newScenario);
    running = true;
    round = 0;
    begin = time.now();
    startRound();
}

void ScenarioRunner::startRound() {
    ++generation;
    ++round;
    lasting.clear();
    progress.assign(scenario_.steps.size(), {});
    roundBegin = round == 1 ? begin : std::max(time.now(), roundBegin + kShortestRound);
    for (std::size_t index = 0; index < scenario_.steps.size(); ++index) {
        if (scenario_.steps[index].upon == 0) {
            postAt(roundBegin + of(scenario_.steps[index].at), [this, index] { run(index, 0); });
        }
    }
    if (scenario_.length) {
        postAt(roundBegin + of(*scenario_.length), [this] { endRound(); });
    }
}

void ScenarioRunner::onCommand(std::uint32_t browser, std::uint32_t command) {
    const std::uint64_t before = generation;
    for (std::size_t index = 0; running && generation == before && index < scenario_.steps.size(); ++index) {
        const Step& step = scenario_.steps[index];
        if (step.upon == command && (step.browser == 0 || step.browser == browser)) {
            meet(index, browser);
        }
    }
}

void ScenarioRunner::meet(std::size_t index, std::uint32_t browser) {
    const Step& step = scenario_.steps[index];
    const bool isIt = ++progress[index].commands == step.nth || step.every;
    if (isIt && step.after) {
        postAt(time.now() + of(*step.after), [this, index, browser] { run(index, browser); });
    } else if (isIt) {
        run(index, browser);
    }
}

void ScenarioRunner::run(std::size_t index, std::uint32_t asker) {
    const Step& step = scenario_.steps[index];
    const FaultId id = ++lastFault;
    if (hasEnd(step)) {
        lasting.insert(id);
    }
    const Step::Duration elapsed = time.now() - begin;  // a step may take its time
    std::string problem = actions.begin(step, asker, id);
    if (!problem.empty()) {
        lasting.erase(id);
    } else if (hasEnd(step) && step.values.contains("seconds")) {
        postAt(time.now() + of(Step::Duration(step.values["seconds"].get<double>())), [this, id] {
            actions.undo(id);
            onOver(id);
        });
    }
    progress[index].isDone = !step.every;
    listener.done({index, elapsed, std::move(problem)});
    look();
}

/// The end comes soon, not now: a fault may end while an event is on its way.
void ScenarioRunner::onOver(FaultId id) {
    if (lasting.erase(id) != 0) {
        look();
    }
}

bool ScenarioRunner::isRoundOver() const {
    return lasting.empty() &&
           std::all_of(progress.begin(), progress.end(), [](const Progress& each) { return each.isDone; });
}

void ScenarioRunner::look() {
    if (running && !scenario_.length && isRoundOver()) {
        postAt(time.now(), [this] {
            if (isRoundOver()) {
                endRound();
            }
        });
    }
}

void ScenarioRunner::endRound() {
    for (std::size_t index = 0; index < progress.size(); ++index) {
        const Step& step = scenario_.steps[index];
        if (!progress[index].isDone && !step.every) {
            listener.done({index, time.now() - begin, "the command that it waits for did not come"});
        }
    }
    if (round < scenario_.rounds) {
        actions.undoAll();
        startRound();
        return;
    }
    if (scenario_.stay) {
        for (const FaultId id : std::set<FaultId>(lasting)) {
            actions.undo(id);
        }
    } else {
        actions.undoAll();
    }
    end();
}

void ScenarioRunner::end() {
    ++generation;
    running = false;
    lasting.clear();
    listener.ended();
}

void ScenarioRunner::stop() {
    actions.undoAll();
    if (running) {
        end();
    }
}

}  // namespace dtvservice
