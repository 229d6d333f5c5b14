// Handles the operator's requests about scenarios.
#include "scenarios_room.h"

#include "request_values.h"

namespace dtvservice {

using nlohmann::json;

namespace {

constexpr std::size_t kMostKept = 1000;

ScenarioRunner::Time timeOf(EventLoop& loop) {
    return {&EventLoop::Clock::now,
            [&loop](EventLoop::Clock::time_point time, EventLoop::Task task) { loop.postAt(time, std::move(task)); }};
}

/// "signal-lost {"seconds":2}"
std::string textOf(const Step& step) {
    return std::string(step.action->name) +
           (step.values.empty() ? "" : " " + step.values.dump(-1, ' ', true, json::error_handler_t::replace));
}

}  // namespace

ScenariosRoom::ScenariosRoom(Core& newCore, Transport transport, std::optional<Scenario> newFirst)
    : core(newCore),
      faults(newCore, std::move(transport), [this](FaultId id) { runner.onOver(id); }),
      runner(faults, timeOf(newCore.loop),
             {[this](const ScenarioRunner::Done& done) { noteDone(done); }, [this] { noteEnd(); }}),
      first(std::move(newFirst)) {
    core.commands.gate = [this](Browser asker, std::uint32_t command) {
        runner.onCommand(asker, command);
        return faults.letsPass(asker, command);
    };
    core.requests.add("scenario", [this](const json& request) { return start(request); });
    core.requests.add("scenario-stop", calls(*this, &ScenariosRoom::stop));
    core.requests.add("scenario-progress", calls(*this, &ScenariosRoom::tellProgress));
    core.requests.add("status", calls(*this, &ScenariosRoom::describe));
}

void ScenariosRoom::servicePresented(const broadcast::Channel&) {
    if (!first) {
        return;
    }
    // A packet is on its way, which a step must not disturb.
    core.loop.post([this, scenario = std::move(*first)] {
        if (!runner.isRunning()) {
            start(scenario);
        }
    });
    first.reset();
}

void ScenariosRoom::start(Scenario scenario) {
    happened.clear();
    forgotten = 0;
    failed = 0;
    ++number;
    BLOG_TAGGED(blog::kOrdinary, "scenario %s: started\n", shownName(scenario.name).c_str());
    runner.start(std::move(scenario));
}

json ScenariosRoom::start(const json& request) {
    if (runner.isRunning()) {
        throw std::invalid_argument("the scenario " + runner.scenario().name + " is running; it must end first");
    }
    std::string error;
    std::optional<Scenario> scenario = parseScenario(get<std::string>(request, "text"), error);
    if (!scenario) {
        throw std::invalid_argument(error);
    }
    start(std::move(*scenario));
    return {{"scenario", runner.scenario().name}, {"scenario_number", number}};
}

json ScenariosRoom::stop(const json&) {
    const bool wasRunning = runner.isRunning();
    runner.stop();
    return {{"changed", wasRunning}};
}

void ScenariosRoom::noteDone(const ScenarioRunner::Done& done) {
    const Step& step = runner.scenario().steps[done.step];
    const std::string name = shownName(runner.scenario().name);
    json entry = {{"step", done.step}, {"action", textOf(step)}, {"elapsed", done.elapsed.count()}};
    if (done.problem.empty()) {
        BLOG_TAGGED(blog::kOrdinary, "scenario %s: steps[%zu]: %s\n", name.c_str(), done.step,
                    shownName(textOf(step)).c_str());
    } else {
        BLOG_TAGGED(blog::kFailure, "scenario %s: steps[%zu]: %s: failed: %s\n", name.c_str(), done.step,
                    shownName(textOf(step)).c_str(), shownName(done.problem).c_str());
        entry["error"] = done.problem;
        ++failed;
    }
    happened.push_back(std::move(entry));
    if (happened.size() > kMostKept) {
        happened.pop_front();
        ++forgotten;
    }
}

void ScenariosRoom::noteEnd() {
    BLOG_TAGGED(blog::kOrdinary, "scenario %s: ended; steps done: %llu, failed: %llu\n",
                shownName(runner.scenario().name).c_str(),
                static_cast<unsigned long long>(forgotten + happened.size() - failed),
                static_cast<unsigned long long>(failed));
}

/// The steps from the given one on, as far as they are kept.
json ScenariosRoom::tellProgress(const json& request) {
    const auto from = getNumber<std::uint64_t>(request, "from");
    json list = json::array();
    for (std::uint64_t index = std::max(from, forgotten); index < forgotten + happened.size(); ++index) {
        list.push_back(happened[static_cast<std::size_t>(index - forgotten)]);
    }
    return {{"scenario_number", number},
            {"running", runner.isRunning()},
            {"next", forgotten + happened.size()},
            {"steps_failed", failed},
            {"steps_happened", std::move(list)}};
}

json ScenariosRoom::describe(const json&) {
    return runner.isRunning() ? json{{"scenario", runner.scenario().name}} : json::object();
}

}  // namespace dtvservice
