// When the steps of a scenario are done. The test moves the clock.
#include "scenario_runner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

namespace {

using namespace dtvservice;
using testing::ElementsAre;
using testing::IsEmpty;

/// Notes what is done to the service.
class NotedActions : public StepActions {
public:
    std::string begin(const Step& step, std::uint32_t asker, FaultId id) override {
        noted.push_back(std::string(step.action->name) + " by " + std::to_string(asker));
        names[id] = step.action->name;
        return problem;
    }
    void undo(FaultId id) override { noted.push_back("undo " + names[id]); }
    void undoAll() override { noted.emplace_back("undo all"); }

    std::vector<std::string> take() { return std::exchange(noted, {}); }
    FaultId last() const { return names.rbegin()->first; }

    std::string problem;

private:
    std::vector<std::string> noted;
    std::map<FaultId, std::string> names;
};

class ARunningScenario : public testing::Test {
protected:
    using Clock = ScenarioRunner::Clock;

    void starts(const std::string& text) {
        std::string error;
        std::optional<Scenario> scenario = parseScenario(text, error);
        ASSERT_TRUE(scenario) << error;
        runner.start(std::move(*scenario));
        actions.take();
        pass(0);
    }
    /// Moves the clock, and does what is due on the way.
    void pass(double seconds) {
        const Clock::time_point end = now + std::chrono::duration_cast<Clock::duration>(Step::Duration(seconds));
        while (!tasks.empty() && tasks.begin()->first <= end) {
            now = std::max(now, tasks.begin()->first);
            const EventLoop::Task task = std::move(tasks.begin()->second);
            tasks.erase(tasks.begin());
            task();
        }
        now = end;
    }
    void comes(const char* command, std::uint32_t browser = 1) {
        runner.onCommand(browser, identifierOf(commandNames(), command));
    }

    Clock::time_point now{std::chrono::hours(1)};
    std::multimap<Clock::time_point, EventLoop::Task> tasks;
    NotedActions actions;
    std::vector<std::string> failures;
    std::vector<double> times;
    int ends = 0;
    ScenarioRunner runner{
        actions,
        {[this] { return now; },
         [this](Clock::time_point time, EventLoop::Task task) { tasks.emplace(time, std::move(task)); }},
        {[this](const ScenarioRunner::Done& done) {
             times.push_back(done.elapsed.count());
             if (!done.problem.empty()) {
                 failures.push_back(std::to_string(done.step) + ": " + done.problem);
             }
         },
         [this] { ++ends; }}};
};

}  // namespace

TEST_F(ARunningScenario, DoesItsStepsAtTheirTimesAndEnds) {
    starts(R"({"steps":[{"at":2,"ca-remove":{"slot":1}},{"at":0,"ca-insert":{"slot":1}}]})");
    EXPECT_THAT(actions.take(), ElementsAre("ca-insert by 0"));
    pass(1.9);
    EXPECT_THAT(actions.take(), IsEmpty());
    EXPECT_TRUE(runner.isRunning());
    pass(0.1);
    EXPECT_THAT(actions.take(), ElementsAre("ca-remove by 0", "undo all"));
    EXPECT_FALSE(runner.isRunning());
    EXPECT_EQ(ends, 1);
    EXPECT_THAT(times, ElementsAre(0, 2));
}

TEST_F(ARunningScenario, DoesAStepUponTheNthCommandBeforeItIsHandled) {
    starts(R"({"steps":[{"upon":"cmdFilterOpen","nth":2,"browser":3,"stop-terminals":{}}]})");
    comes("cmdFilterOpen", 3);
    comes("cmdFilterOpen", 4);
    comes("cmdFilterClose", 3);
    EXPECT_THAT(actions.take(), IsEmpty());
    comes("cmdFilterOpen", 3);
    EXPECT_THAT(actions.take(), ElementsAre("stop-terminals by 3"));
    comes("cmdFilterOpen", 3);
    pass(0);
    EXPECT_THAT(actions.take(), ElementsAre("undo all"));
}

TEST_F(ARunningScenario, DoesAStepSoLongBehindACommand) {
    starts(R"({"steps":[{"upon":"cmdFilterOpen","after":0.5,"stop-terminals":{}},
                        {"upon":"cmdFilterOpen","after":0,"ca-insert":{"slot":1}}]})");
    comes("cmdFilterOpen", 7);
    EXPECT_THAT(actions.take(), IsEmpty());
    pass(0);
    EXPECT_THAT(actions.take(), ElementsAre("ca-insert by 7"));
    pass(0.5);
    EXPECT_THAT(actions.take(), ElementsAre("stop-terminals by 7", "undo all"));
}

TEST_F(ARunningScenario, DoesAStepUponEveryCommandUntilItsEnd) {
    starts(R"({"seconds":5,"steps":[{"upon":"cmdFilterOpen","every":true,"stop-terminals":{}}]})");
    comes("cmdFilterOpen");
    comes("cmdFilterOpen");
    EXPECT_EQ(actions.take().size(), 2U);
    pass(5);
    EXPECT_FALSE(runner.isRunning());
    EXPECT_THAT(failures, IsEmpty());
    comes("cmdFilterOpen");
    EXPECT_THAT(actions.take(), ElementsAre("undo all"));
}

TEST_F(ARunningScenario, TellsACommandThatHasNotComeAtItsEnd) {
    starts(R"({"seconds":5,"steps":[{"at":0,"stop-terminals":{}},{"upon":"cmdFilterOpen","stop-terminals":{}}]})");
    pass(5);
    EXPECT_THAT(failures, ElementsAre("1: the command that it waits for did not come"));
    EXPECT_EQ(ends, 1);
}

TEST_F(ARunningScenario, WaitsForTheEndOfAFaultThatHasOne) {
    starts(R"({"steps":[{"at":1,"signal-lost":{"seconds":3}}]})");
    pass(1);
    EXPECT_THAT(actions.take(), ElementsAre("signal-lost by 0"));
    pass(2.9);
    EXPECT_TRUE(runner.isRunning());
    pass(0.1);
    EXPECT_THAT(actions.take(), ElementsAre("undo signal-lost", "undo all"));
    EXPECT_FALSE(runner.isRunning());
}

TEST_F(ARunningScenario, WaitsUntilAFaultHasBeenUsed) {
    starts(R"({"steps":[{"at":0,"answer-withheld":{"times":1}}]})");
    pass(100);
    EXPECT_TRUE(runner.isRunning());
    runner.onOver(actions.last());
    EXPECT_TRUE(runner.isRunning()) << "an event is on its way";
    pass(0);
    EXPECT_FALSE(runner.isRunning());
}

TEST_F(ARunningScenario, DoesNotWaitForAFaultWithoutAnEnd) {
    starts(R"({"steps":[{"at":0,"signal-lost":{}},{"at":1,"stop-terminals":{}}]})");
    pass(1);
    EXPECT_THAT(actions.take(), ElementsAre("signal-lost by 0", "stop-terminals by 0", "undo all"));
}

TEST_F(ARunningScenario, LeavesFaultsBehindWhereItSaysSo) {
    starts(R"({"stay":true,"steps":[{"at":0,"signal-lost":{}}]})");
    EXPECT_FALSE(runner.isRunning());
    EXPECT_THAT(actions.take(), ElementsAre("signal-lost by 0"));
    runner.stop();
    EXPECT_THAT(actions.take(), ElementsAre("undo all"));
    EXPECT_EQ(ends, 1);
}

TEST_F(ARunningScenario, LeavesNoFaultBehindThatHasAnEnd) {
    starts(
        R"({"stay":true,"seconds":2,"steps":[{"at":0,"signal-lost":{}},{"at":1,"pid-withheld":{"pid":0,"seconds":9}}]})");
    pass(2);
    EXPECT_THAT(actions.take(), ElementsAre("signal-lost by 0", "pid-withheld by 0", "undo pid-withheld"));
}

TEST_F(ARunningScenario, UndoesFaultsBetweenItsRounds) {
    starts(R"({"repeat":3,"stay":true,"seconds":2,"steps":[{"at":1,"signal-lost":{}}]})");
    pass(3.5);
    EXPECT_THAT(actions.take(), ElementsAre("signal-lost by 0", "undo all", "signal-lost by 0"));
    pass(2.5);
    EXPECT_THAT(actions.take(), ElementsAre("undo all", "signal-lost by 0"));
    EXPECT_FALSE(runner.isRunning());
    EXPECT_THAT(times, ElementsAre(1, 3, 5));
}

TEST_F(ARunningScenario, BeginsItsRoundsATenthOfASecondApartAtLeast) {
    for (const char* const length : {"", R"("seconds":0,)"}) {
        starts(std::string("{") + length + R"("repeat":1000,"steps":[{"at":0,"stop-terminals":{}}]})");
        EXPECT_EQ(actions.take().size(), 2U) << "the step, and the end of the round";
        pass(0.09);
        EXPECT_THAT(actions.take(), IsEmpty());
        pass(0.02);
        EXPECT_EQ(actions.take().size(), 2U);
        runner.stop();
    }
}

TEST_F(ARunningScenario, GoesOnWhenAStepFails) {
    actions.problem = "no";
    starts(R"({"steps":[{"at":0,"signal-lost":{"seconds":5}},{"at":1,"stop-terminals":{}}]})");
    pass(1);
    EXPECT_THAT(failures, ElementsAre("0: no", "1: no"));
    EXPECT_FALSE(runner.isRunning()) << "the fault has not begun";
}

TEST_F(ARunningScenario, DoesNothingMoreWhenItIsStopped) {
    starts(R"({"steps":[{"at":0,"signal-lost":{"seconds":1}},{"at":1,"stop-terminals":{}}]})");
    runner.stop();
    EXPECT_THAT(actions.take(), ElementsAre("signal-lost by 0", "undo all"));
    EXPECT_EQ(ends, 1);
    pass(10);
    EXPECT_THAT(actions.take(), IsEmpty());
}
