// Scenarios: their texts, and their steps in a time that passes at once.
#include <map>

#include "oracles.h"
#include "scenario_runner.h"
#include "text/printable.h"

namespace {

using namespace dtvservice;

/// Each third action fails.
class CountedActions : public StepActions {
public:
    std::string begin(const Step& step, std::uint32_t, FaultId id) override {
        fuzz::expect(step.action != nullptr && step.values.is_object(), "a step without an action");
        return id % 3 == 0 ? "it fails" : "";
    }
    void undo(FaultId) override {}
    void undoAll() override {}
};

/// Runs what is due, in the order of the times. A scenario may have a million rounds, so not all of it.
class PassingTime {
public:
    ScenarioRunner::Time time() {
        return {[this] { return now; }, [this](ScenarioRunner::Clock::time_point when,
                                               EventLoop::Task task) { tasks.emplace(when, std::move(task)); }};
    }
    template <typename Between>
    void pass(Between between) {
        constexpr int kMostTasks = 2000;
        for (int count = 0; count < kMostTasks && !tasks.empty(); ++count) {
            now = std::max(now, tasks.begin()->first);
            const EventLoop::Task task = std::move(tasks.begin()->second);
            tasks.erase(tasks.begin());
            task();
            between();
        }
    }

private:
    ScenarioRunner::Clock::time_point now{};
    std::multimap<ScenarioRunner::Clock::time_point, EventLoop::Task> tasks;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::run(data, size, {16U << 20U, 8000}, [](fuzz::Input input) {
        std::string error;
        std::optional<Scenario> scenario = parseScenario(input.restAsText(), error);
        fuzz::expect(scenario.has_value() == error.empty(), "neither a scenario nor an error, or both: " + error);
        fuzz::expectPrintable(text::printable(error), "error of a scenario");
        if (!scenario) {
            return;
        }
        CountedActions actions;
        PassingTime passing;
        bool hasEnded = false;
        ScenarioRunner runner(actions, passing.time(), {[](const ScenarioRunner::Done&) {}, [&] { hasEnded = true; }});
        runner.start(std::move(*scenario));
        passing.pass([&] { runner.onCommand(1, commandNames()[0].identifier); });
        runner.stop();
        fuzz::expect(hasEnded && !runner.isRunning(), "a scenario that goes on when it is stopped");
    });
}
