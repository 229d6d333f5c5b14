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
    explicit CheckedStage(const RecordedBrowser& newBrowser) : browser(newBrowser) {}

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
        for (const RecordedStep& step : browser.steps) {
            commands += step.kind == RecordedStep::Kind::command ? 1 : 0;
        }
        fuzz::expect(done + commands == browser.steps.size(), "a step that is not done, or done twice");
    }

private:
    const RecordedBrowser& browser;
    std::size_t done = 0;
};

/// The live browser sends every second command at its place, some too early, and never the rest.
void walk(const RecordedBrowser& browser, bool isFast) {
    CheckedStage stage(browser);
    Cursor::Time now{};
    constexpr std::chrono::milliseconds kWait{10};
    Cursor cursor(browser, {isFast, kWait}, stage, now);
    std::size_t sent = 0;
    while (const std::optional<Cursor::Time> next = cursor.run(now)) {
        fuzz::expect(*next > now, "it wants to be run again at once");
        const std::size_t before = cursor.done();
        const RecordedStep& step = cursor.current();
        constexpr std::size_t kAhead = 3;
        const std::size_t ahead = before + ++sent % kAhead;
        if (ahead < browser.steps.size() && browser.steps[ahead].kind == RecordedStep::Kind::command) {
            cursor.take(*browser.steps[ahead].message, browser.steps[ahead].values);
        }
        if (step.kind != RecordedStep::Kind::command || sent % 2 == 0) {
            now = *next;
        }
    }
    fuzz::expect(cursor.isAtEnd(), "it stops before the end of the recording");
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
            walk(browser, true);
            walk(browser, false);
        }
    });
}
