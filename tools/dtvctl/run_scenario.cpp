// Asks for the progress of a scenario ten times a second.
#include "run_scenario.h"

#include <chrono>
#include <cstdint>
#include <cstdio>

#include "ending_signals.h"
#include "safe_json.h"
#include "scenario_file.h"
#include "text/printable.h"

namespace dtvctl {

using nlohmann::json;

namespace {

constexpr std::chrono::milliseconds kPace{100};

/// Shows what has happened since the last time.
class Progress {
public:
    Progress(ServiceClient& newClient, std::uint64_t newNumber, bool newAsJson)
        : client(newClient), number(newNumber), asJson(newAsJson) {}

    /// False once the scenario has ended.
    bool show() {
        const json progress = client.ask({{"command", "scenario-progress"}, {"from", next}});
        if (progress.at("scenario_number") != number) {
            return false;
        }
        for (const json& step : progress.at("steps_happened")) {
            show(step);
        }
        next = progress.at("next").get<std::uint64_t>();
        failed = progress.at("steps_failed").get<std::uint64_t>();
        std::fflush(stdout);
        return progress.at("running").get<bool>();
    }
    void showEnd() const {
        if (asJson) {
            printJson({{"event", "scenario_ended"}, {"steps_done", next - failed}, {"steps_failed", failed}});
        } else {
            std::printf("ended: %llu steps done, %llu failed\n", static_cast<unsigned long long>(next - failed),
                        static_cast<unsigned long long>(failed));
        }
    }
    bool hasFailed() const { return failed != 0; }

private:
    void show(json step) const {
        if (asJson) {
            step["event"] = "scenario_step";
            printJson(std::move(step));
            return;
        }
        const std::string place = "steps[" + std::to_string(step.at("step").get<std::uint64_t>()) + "]";
        std::string line = step.at("action").get<std::string>();
        line += step.contains("error") ? ": failed: " + step["error"].get<std::string>() : "";
        std::printf("%9.3f s  %s  %s\n", step.at("elapsed").get<double>(), place.c_str(),
                    text::printable(line).c_str());
    }

    ServiceClient& client;
    std::uint64_t number;
    bool asJson;
    std::uint64_t next = 0;
    std::uint64_t failed = 0;
};

}  // namespace

std::string scenarioText(const std::string& path) {
    std::string text;
    std::string error;
    if (!control::readScenarioFile(path, text, error)) {
        throw Refused(path + ": " + error);
    }
    return text;
}

bool runScenario(ServiceClient& client, const std::string& path, const std::string& text, bool asJson) {
    const EndingSignals signals;
    json started;
    try {
        started = client.ask({{"command", "scenario"}, {"text", text}});
    } catch (const Refused& refusal) {
        throw Refused(path + ": " + refusal.what());
    }
    Progress progress(client, started.at("scenario_number").get<std::uint64_t>(), asJson);
    bool wasEnded = false;
    while (progress.show()) {
        if (!wasEnded && (signals.comeWithin(kPace) || std::ferror(stdout) != 0)) {
            client.ask({{"command", "scenario-stop"}});
            wasEnded = true;
        }
    }
    progress.showEnd();
    return !wasEnded && !progress.hasFailed();
}

}  // namespace dtvctl
