// ScenariosRoom: runs scenarios, one at a time, for operators, or the one of the command line when the first service is
// presented.
// Threads: the loop's.
// Blocks:  while a step does.
// Fails:   a step that fails is logged and told; the scenario goes on.
#pragma once

#include <deque>

#include "core.h"
#include "scenario_runner.h"
#include "service_faults.h"

namespace dtvservice {

class ScenariosRoom : public Room {
public:
    /// `newFirst`: starts when the first service is presented.
    ScenariosRoom(Core& newCore, Transport transport, std::optional<Scenario> newFirst);

    void servicePresented(const broadcast::Channel& channel) override;

private:
    nlohmann::json start(const nlohmann::json& request);
    nlohmann::json stop(const nlohmann::json& request);
    nlohmann::json tellProgress(const nlohmann::json& request);
    nlohmann::json describe(const nlohmann::json& request);
    void start(Scenario scenario);
    void noteDone(const ScenarioRunner::Done& done);
    void noteEnd();

    Core& core;
    ServiceFaults faults;
    ScenarioRunner runner;
    std::optional<Scenario> first;
    std::deque<nlohmann::json> happened;  // the last steps of the scenario
    std::uint64_t forgotten = 0;          // its steps before them
    std::uint64_t number = 0;             // of the scenario
    std::uint64_t failed = 0;
};

}  // namespace dtvservice
