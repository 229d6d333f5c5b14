// The commands of the same kind: the complete lines of each, for every result of the send, and what it returns.
#include <algorithm>

#include "service_fixture.h"

namespace {

using Service = velmora::dvbservice::BrowserDVBService;
using lo::browserdvbservice::ApplicationStartStatus;

/// What an operation returns when its send returns `result`.
enum class Returns { nothing, zero, result, sent };

struct Command {
    const char* function;
    std::function<int(Service&)> call;
    bool guarded;
    std::vector<std::string> lines;  // "RESULT" stands for the send's result
    Returns returns;
    bool traced;
};

template <typename Call>
std::function<int(Service&)> noResult(Call call) {
    return [call](Service& service) {
        call(service);
        return 0;
    };
}

std::vector<Command> guardedCommands() {
    return {
        {"tuneToService",
         noResult([](Service& of) { of.tuneToService(-1, -2, -3, -4, -5); }),
         true,
         {"TunerToService:{-1,-2:-3:-4}\n"},
         Returns::nothing,
         true},
        {"tuneToService",
         noResult([](Service& of) { of.tuneToService("", -4, -5); }),
         true,
         {"TunerToService:{ dsd len:0,sid:-4}\n"},
         Returns::nothing,
         true},
        {"tuneToComponent",
         noResult([](Service& of) { of.tuneToComponent(-1, -2, -3); }),
         true,
         {"Tuner to Component: -1,-2,-3\n"},
         Returns::nothing,
         true},
        {"selectComponent", noResult([](Service& of) { of.selectComponent(-1); }), true, {}, Returns::nothing, true},
        {"unselectComponent",
         noResult([](Service& of) { of.unselectComponent(-1); }),
         true,
         {},
         Returns::nothing,
         true},
        {"setAudioSource",
         noResult([](Service& of) { of.setAudioSource(0xFFFFFFFFU, ""); }),
         true,
         {},
         Returns::nothing,
         true},
    };
}

std::vector<Command> plainCommands() {
    return {
        {"triggerAitRestart",
         noResult([](Service& of) { of.triggerAitRestart(); }),
         false,
         {"called.\n"},
         Returns::nothing,
         true},
        {"notifyMwhbStart",
         noResult([](Service& of) { of.notifyMwhbStart(); }),
         false,
         {"notify tvmain mwhb is started.\n"},
         Returns::nothing,
         true},
        {"sendApplicationStartStatus",
         [](Service& of) { return of.sendApplicationStartStatus(static_cast<ApplicationStartStatus>(-7)); },
         false,
         {"application start status -7.\n"},
         Returns::zero,
         true},
        {"sendApplicationStartStatus",
         [](Service& of) { return of.sendApplicationStartStatus(static_cast<ApplicationStartStatus>(7)); },
         false,
         {"application start status 7.\n"},
         Returns::zero,
         true},
        {"TriggerServiceInfoAcquire",
         noResult([](Service& of) { of.TriggerServiceInfoAcquire(); }),
         false,
         {"called.\n"},
         Returns::nothing,
         true},
        {"vbStartDtvInfoRequest",
         noResult([](Service& of) { of.vbStartDtvInfoRequest(); }),
         false,
         {"called.\n"},
         Returns::nothing,
         true},
        {"mountDsmcc",
         [](Service& of) { return of.mountDsmcc(1, 2, 3, 4, -5); },
         false,
         {"called.\n"},
         Returns::result,
         false},
        {"addStreamEventListener",
         [](Service& of) { return int{of.addStreamEventListener(1, 2, 3, 4, -5, "a", "b")}; },
         false,
         {"called.\n"},
         Returns::sent,
         true},
        {"removeStreamEventListener",
         [](Service& of) { return int{of.removeStreamEventListener(1, 2, 3, 4, -5, "a", "b")}; },
         false,
         {"called.\n"},
         Returns::sent,
         true},
    };
}

std::vector<Command> requests() {
    return {
        {"sendPtsRequest",
         [](Service& of) { return of.sendPtsRequest(1); },
         false,
         {"send pts request res: RESULT\n"},
         Returns::result,
         true},
        {"startTemiTimelineRequest",
         [](Service& of) { return of.startTemiTimelineRequest(1, 2, 3); },
         false,
         {"startTemiTimelineRequest request res: RESULT\n"},
         Returns::result,
         true},
        {"stopTemiTimelineRequest",
         [](Service& of) { return of.stopTemiTimelineRequest(); },
         false,
         {"stopTemiTimelineRequest request res: RESULT\n"},
         Returns::result,
         true},
        {"startOSDDetection",
         [](Service& of) { return of.startOSDDetection(1); },
         false,
         {"start OSD Detection res: RESULT\n"},
         Returns::result,
         true},
        {"stopOSDDetection",
         [](Service& of) { return of.stopOSDDetection(1); },
         false,
         {"start OSD Detection res: RESULT\n"},
         Returns::result,
         true},
        {"sendDrmMessage",
         [](Service& of) { return of.sendDrmMessage(0xFFFFFFFF00000002, 65535, 3, "", ""); },
         false,
         {"session id = 18446744069414584322, ca system id = 65535\n", "send Drm message res: RESULT\n"},
         Returns::result,
         true},
        {"connectCa",
         [](Service& of) { return of.connectCa(0xFFFFFFFF00000002); },
         false,
         {"connect CA, session is 18446744069414584322\n"},
         Returns::result,
         true},
        {"disconnectCa",
         [](Service& of) { return of.disconnectCa(65535); },
         false,
         {"disconnect CA, slot id is 65535\n"},
         Returns::result,
         true},
        {"sendOpAppInstallStatus",
         [](Service& of) { return of.sendOpAppInstallStatus(1, 1); },
         false,
         {"opappType:1, installStatus:1.\n"},
         Returns::result,
         true},
    };
}

std::vector<Command> allCommands() {
    std::vector<Command> all = guardedCommands();
    for (const auto& more : {plainCommands(), requests()}) {
        all.insert(all.end(), more.begin(), more.end());
    }
    return all;
}

std::vector<std::string> expectedStory(const Command& command, int result) {
    const std::string name = command.function;
    std::vector<std::string> story;
    for (std::string line : command.lines) {
        const std::size_t at = line.find("RESULT");
        if (at != std::string::npos) {
            line.replace(at, 6, std::to_string(result));
        }
        story.push_back(name + ": " + line);
    }
    if (command.guarded && result != 0) {
        story.push_back(name + ": Failed. " + std::to_string(result) + "\n");
    }
    if (command.traced) {
        story.insert(story.begin(), "-> " + name);
        story.push_back("<- " + name);
    }
    return story;
}

int expectedReturn(Returns returns, int result) {
    return returns == Returns::result ? result : returns == Returns::sent ? int{result == 0} : 0;
}

class EachCommand : public AServiceObject {};

}  // namespace

TEST_F(EachCommand, LogsTheSameForEverySendResult) {
    for (const Command& command : allCommands()) {
        for (const int result : {0, 7, -107, -1}) {
            SCOPED_TRACE(std::string(command.function) + " " + std::to_string(result));
            recording::reset();
            recording::setSendResult(result);
            command.call(*service);
            EXPECT_EQ(logged::story(), expectedStory(command, result));
            EXPECT_EQ(recording::sent().size(), 1U) << "whatever the answer, it is sent once";
        }
    }
}

TEST_F(EachCommand, MapsTheSendResultToItsResult) {
    for (const Command& command : allCommands()) {
        for (const int result : {0, 7, 1, -107, -1}) {
            SCOPED_TRACE(std::string(command.function) + " " + std::to_string(result));
            recording::setSendResult(result);
            EXPECT_EQ(command.call(*service), expectedReturn(command.returns, result));
        }
    }
}

TEST_F(EachCommand, IsSentWithDefaultIdsAndTransport) {
    for (const Command& command : allCommands()) {
        SCOPED_TRACE(command.function);
        recording::reset();
        command.call(*service);
        EXPECT_EQ(theSent().ids.peer, 0xFFFFFFFFU);
        EXPECT_EQ(theSent().ids.transaction, 0xFFFFFFFFU);
    }
}

TEST_F(EachCommand, FormatsOnlyWantedLines) {
    const std::vector<Command> commands = allCommands();
    const auto linesUpTo = [&](std::uint32_t threshold) {
        recording::reset();
        recording::setSendResult(-1);
        recording::setLogThreshold(threshold);
        for (const Command& command : commands) {
            command.call(*service);
        }
        std::vector<recording::LogLine> lines = recording::log();
        EXPECT_EQ(recording::formattedLines(), lines.size());
        return lines;
    };
    const std::vector<recording::LogLine> all = linesUpTo(0xFFFF);
    const std::uint64_t checks = recording::levelChecks();
    for (const std::uint32_t threshold : {0U, 0x03E7U, 0x03E8U, 0x0F9FU, 0x0FA0U, 0x1387U, 0x1388U}) {
        const auto wanted = std::count_if(
            all.begin(), all.end(), [threshold](const auto& line) { return (line.level & 0xFFFFU) <= threshold; });
        EXPECT_EQ(linesUpTo(threshold).size(), static_cast<std::size_t>(wanted)) << threshold;
        EXPECT_EQ(recording::levelChecks(), checks) << "each line asks";
    }
}

TEST_F(EachCommand, TracesWithOneLineNumberAtBothEnds) {
    service->selectComponent(1);
    service->unselectComponent(1);
    std::vector<std::string> ends;
    for (const recording::LogLine& line : recording::log()) {
        if (line.level == blog::kTrace) {
            ends.push_back(line.text.substr(line.text.find("] ")));
        }
    }
    ASSERT_EQ(ends.size(), 4U);
    EXPECT_EQ(ends[0], ends[1]);
    EXPECT_EQ(ends[2], ends[3]);
    const auto numberOf = [](const std::string& end) { return std::stoi(end.substr(end.find(".cpp:") + 5)); };
    EXPECT_LT(numberOf(ends[0]), numberOf(ends[2])) << "each its own";
}
