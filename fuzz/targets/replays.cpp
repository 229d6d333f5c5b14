// Recordings given to a replay: what is read of them, and the walk through them in a time that passes at once, while a
// live browser sends what it was recorded with and what it was not.
#include "cursor.h"
#include "message_layout.h"
#include "oracles.h"
#include "text/printable.h"

namespace {

using namespace dtvservice;

/// Checks what a browser and those who watch it would be told. Some sections find no room.
class CheckedStage : public Stage {
public:
    explicit CheckedStage(const Lane& newLane) : lane(newLane) {}

    void event(const message_fields::Message& message, const std::vector<message_fields::Value>& values) override {
        fuzz::expect(values.size() == message_fields::layoutOf(message).size(), "an event without all of its values");
        ++done;
    }
    bool section(const std::string&, const std::string& bytes) override {
        constexpr std::size_t kFull = 3;
        const bool hasRoom = bytes.size() % kFull != 0;
        done += hasRoom ? 1 : 0;
        return hasRoom;
    }
    void sectionLost(const std::string&, const std::string&) override { ++done; }
    void seen(const RecordedStep& step, const std::string&) override {
        const bool isSection = step.kind == RecordedStep::Kind::droppedSection;
        fuzz::expect(isSection || step.message != nullptr, "a refusal of nothing");
        ++done;
    }
    void missed(const RecordedStep& command) override {
        fuzz::expect(command.kind == RecordedStep::Kind::command, "it waits for what is no command");
    }
    void left() override { ++done; }

    /// All but the commands, each once.
    void expectAllDone() const {
        std::size_t commands = 0;
        for (const RecordedStep* const step : lane.steps) {
            commands += step->kind == RecordedStep::Kind::command ? 1 : 0;
        }
        fuzz::expect(done + commands == lane.steps.size(), "a step that is not done, or done twice");
    }

private:
    const Lane& lane;
    std::size_t done = 0;
};

/// The live browser sends every second command at its place, some too early, and never the rest; but all of a filter,
/// whose lane waits for them.
void walk(const Lane& lane, MadeValues& made, bool isFast) {
    CheckedStage stage(lane);
    Cursor::Time now{};
    constexpr std::chrono::milliseconds kWait{10};
    Cursor cursor(lane, {isFast, kWait}, made, stage, now);
    std::size_t sent = 0;
    for (std::optional<Cursor::Time> next = cursor.run(now); !cursor.isAtEnd(); next = cursor.run(now)) {
        fuzz::expect(next ? *next > now : lane.isOfAFilter, "it wants to be run again at once, or never");
        constexpr std::size_t kAhead = 3;
        const std::size_t ahead = cursor.done() + ++sent % kAhead;
        if (ahead < lane.steps.size() && lane.steps[ahead]->kind == RecordedStep::Kind::command) {
            cursor.take(*lane.steps[ahead]->message, lane.steps[ahead]->values);
        }
        const bool isCommand = cursor.current().kind == RecordedStep::Kind::command;
        if (next && (!isCommand || sent % 2 == 0)) {
            now = *next;
        }
    }
    stage.expectAllDone();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::run(data, size, {1U << 20U, 8000}, [](fuzz::Input input) {
        const Recording recording = readRecordedBytes(input.restAsText());
        for (const std::string& problem : recording.problems) {
            fuzz::expectPrintable(text::printable(problem), "a problem");
        }
        for (const RecordedBrowser& browser : recording.browsers) {
            for (const bool isFast : {true, false}) {
                MadeValues made;
                for (const Lane& lane : lanesOf(browser)) {
                    walk(lane, made, isFast);
                }
            }
        }
    });
}
