// The operator's lines: as requests, whose answers dtvctl then shows, and as answers of something that is no service of
// ours.
#include <algorithm>

#include "print_answers.h"
#include "running_service.h"
#include "safe_json.h"
#include "scenario.h"
#include "service_client.h"
#include "text/printable.h"
#include "watch.h"

namespace {

using nlohmann::json;

/// Shows an answer in each way that dtvctl has. One that lacks a value throws, as documented.
void show(const json& answer) {
    for (const auto text : {dtvctl::channelsText, dtvctl::statusText, dtvctl::statisticsText, dtvctl::valuesText,
                            dtvctl::presentedText}) {
        try {
            fuzz::expectPrintable(text(answer), "answer as text");
        } catch (const json::exception&) {
        }
    }
    const std::string line = dtvctl::safeJson(answer);
    fuzz::expectJson(line, "answer as JSON");
    fuzz::expectPrintable(line, "answer as JSON");
}

void compare(const json& before, const json& after) {
    try {
        for (const json& change : dtvctl::changesBetween(before, after)) {
            fuzz::expectPrintable(dtvctl::changeText(change), "change as text");
        }
    } catch (const json::exception&) {
    }
}

/// Takes a line for an answer, as dtvctl does, and compares it with the one before.
void readAndShow(const std::string& line, json& before) {
    try {
        json answer = dtvctl::readAnswer(line);
        show(answer);
        compare(before, answer);
        before = std::move(answer);
    } catch (const dtvctl::NoService&) {
    } catch (const dtvctl::Refused& refused) {
        fuzz::expectPrintable(text::printable(refused.what()), "reason of a refusal");
    }
}

/// Whether the line starts a scenario that takes long whatever its size: it freezes the service, in real time, or has
/// many rounds. The fuzzer of scenarios has those, in a time that passes at once.
bool takesLong(const std::string& line) {
    const json request = json::parse(line, nullptr, false);
    if (!request.is_object() || !request.contains("text") || !request["text"].is_string()) {
        return false;
    }
    std::string error;
    const auto scenario = dtvservice::parseScenario(request["text"].get<std::string>(), error);
    constexpr std::uint64_t kMostRounds = 10;
    const auto freezes = [](const dtvservice::Step& step) {
        return step.action->name == std::string("service-frozen");
    };
    return scenario &&
           (scenario->rounds > kMostRounds || std::any_of(scenario->steps.begin(), scenario->steps.end(), freezes));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::run(data, size, {16U << 20U, 8000}, [](fuzz::Input input) {
        constexpr std::size_t kUntilPresented = 400;
        fuzz::RunningService service;
        service.playSample(kUntilPresented);
        service.join(1);
        json before;
        std::string lines = input.restAsText();
        for (std::size_t begin = 0; begin < lines.size();) {
            const std::size_t end = std::min(lines.find('\n', begin), lines.size());
            const std::string line = lines.substr(begin, end - begin);
            if (!takesLong(line)) {
                readAndShow(service.ask(line), before);
            }
            readAndShow(line, before);
            begin = end + 1;
        }
    });
}
