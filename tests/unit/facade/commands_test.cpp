// Every operation of the DVB API, called through the pointer from the entry point: which message it sends, what it
// returns, and which lines and traces the facade itself writes.
#include <future>
#include <limits>

#include "facade_fixture.h"
#include "vtable_slot.h"

using velmora::dtv::DvbAPIInterface;

namespace {

constexpr const char* kFile = "browser_dvb_apis.cpp";
constexpr int kNothing = 12345;  // for operations without a result

struct Operation {
    const char* name;
    std::function<int(DvbAPIInterface&)> call;
    std::uint32_t messageId;
    const char* wire;
    enum class Result { none, zero, ofSend } result;
    bool traced;
    const char* line;  // written by the facade itself; null for none
};

using Result = Operation::Result;

template <typename Call>
std::function<int(DvbAPIInterface&)> noResult(Call call) {
    return [call](DvbAPIInterface& api) {
        call(api);
        return kNothing;
    };
}

std::vector<Operation> operations() {
    return {
        {"sendApplicationStartedFailed", [](auto& api) { return api.sendApplicationStartedFailed(); }, 0x2867123D,
         "00000001", Result::zero, false, nullptr},
        {"sendApplicationStartedSucceeded", [](auto& api) { return api.sendApplicationStartedSucceeded(); }, 0x2867123D,
         "00000000", Result::zero, false, nullptr},
        {"triggerAitRestart", noResult([](auto& api) { api.triggerAitRestart(); }), 0x2867123B, "00", Result::none,
         false, nullptr},
        {"tuneToService", noResult([](auto& api) { api.tuneToService(1, 2, 3, 4, 5); }), 0x28671236,
         "00000001 00000000 00000000 00000002 00000003 00000004 00000005", Result::none, true, nullptr},
        {"tuneToService", noResult([](auto& api) { api.tuneToService("D", 4, 5); }), 0x28671236,
         "0000000D 00000001 00000000 00000000 00000000 00000004 00000005 44", Result::none, true, nullptr},
        {"tuneToComponent", noResult([](auto& api) { api.tuneToComponent(1, 2, 3); }), 0x28671237,
         "00000001 00000002 00000003", Result::none, true, nullptr},
        {"selectComponent", noResult([](auto& api) { api.selectComponent(-1); }), 0x28671239, "FFFFFFFF", Result::none,
         false, nullptr},
        {"unselectComponent", noResult([](auto& api) { api.unselectComponent(1); }), 0x28671238, "00000001",
         Result::none, true, nullptr},
        {"notifyMwhbStart", noResult([](auto& api) { api.notifyMwhbStart(); }), 0x2867123C, "00", Result::none, false,
         "called.\n"},
        {"sendPtsRequest", [](auto& api) { return api.sendPtsRequest(0xFFFFFFFFU); }, 0x28671249, "FFFFFFFF",
         Result::ofSend, false, nullptr},
        {"startTemiTimelineRequest", [](auto& api) { return api.startTemiTimelineRequest(1, 2, 3); }, 0x2867124A,
         "00000001 00000002 00000003", Result::ofSend, false, nullptr},
        {"stopTemiTimelineRequest", [](auto& api) { return api.stopTemiTimelineRequest(); }, 0x2867124B, "00",
         Result::ofSend, false, nullptr},
        {"startOSDDetection", [](auto& api) { return api.startOSDDetection(7); }, 0x2867124C, "00000007",
         Result::ofSend, false, nullptr},
        {"stopOSDDetection", [](auto& api) { return api.stopOSDDetection(7); }, 0x2867124D, "00000007", Result::ofSend,
         false, nullptr},
        {"sendDrmMessage", [](auto& api) { return api.sendDrmMessage(0xFFFFFFFF00000001, 0xFFFF, 3, "a", "b"); },
         0x2867124E, "FFFFFFFF 00000001 FFFF0003 00000001 00000000 00000001 00000000 6162", Result::ofSend, false,
         "session id = 18446744069414584321, ca system id = 65535\n"},
        {"connectCa", [](auto& api) { return api.connectCa(0x100000000ULL); }, 0x2867124F, "00000001 00000000",
         Result::ofSend, false, nullptr},
        {"disconnectCa", [](auto& api) { return api.disconnectCa(9); }, 0x28671250, "0009", Result::ofSend, false,
         nullptr},
        {"sendOpAppInstallStatus", [](auto& api) { return api.sendOpAppInstallStatus(1, 1); }, 0x28671251,
         "00000001 00000001", Result::ofSend, false, nullptr},
        {"vbStartDtvInfoRequest", noResult([](auto& api) { api.vbStartDtvInfoRequest(); }), 0x28671252, "00",
         Result::none, false, nullptr},
    };
}

int expectedResult(Result result, int ofSend) {
    return result == Result::none ? kNothing : result == Result::zero ? 0 : ofSend;
}

std::vector<std::string> ownTraces() {
    std::vector<std::string> own;
    for (const std::string& trace : logged::traces()) {
        if (trace.find(std::string(" ") + kFile) != std::string::npos) {
            own.push_back(trace);
        }
    }
    return own;
}

constexpr int kLeast = std::numeric_limits<int>::min();
constexpr int kMost = std::numeric_limits<int>::max();

/// The same calls to the DVB API and to the service object, with extreme values.
template <typename Target>
std::vector<std::function<int(Target&)>> extremeCalls() {
    const auto nothing = [](auto call) {
        return [call](Target& of) {
            call(of);
            return kNothing;
        };
    };
    return {
        nothing([](Target& of) { of.tuneToService(kLeast, kMost, -1, kMost - 1, kLeast + 1); }),
        nothing([](Target& of) { of.tuneToService(std::string("\0x", 2), kLeast, kMost); }),
        nothing([](Target& of) { of.tuneToComponent(kMost, kLeast, -1); }),
        nothing([](Target& of) { of.selectComponent(kLeast); }),
        nothing([](Target& of) { of.unselectComponent(kMost); }),
        [](Target& of) { return of.sendPtsRequest(0xFFFFFFFE); },
        [](Target& of) { return of.startTemiTimelineRequest(0xFFFFFFFF, 0, 0xFFFFFFFE); },
        [](Target& of) { return of.startOSDDetection(0xFFFFFFFF); },
        [](Target& of) { return of.stopOSDDetection(0xFFFFFFFE); },
        [](Target& of) { return of.sendDrmMessage(~0ULL, 65535, 65534, std::string("\0", 1), "b"); },
        [](Target& of) { return of.connectCa(~0ULL - 1); },
        [](Target& of) { return of.disconnectCa(65535); },
        [](Target& of) { return of.sendOpAppInstallStatus(kLeast, kMost); },
        [](Target& of) { return of.sendOpAppInstallStatus(-1, 2); },
        [](Target& of) { return of.sendOpAppInstallStatus(0, 1); },
        nothing([](Target& of) { of.vbStartDtvInfoRequest(); }),
    };
}

/// The messages that a call sends, its result, and the service object's lines.
template <typename Target>
std::vector<std::string> outcome(const std::function<int(Target&)>& call, Target& target) {
    recording::reset();
    recording::setSendResult(-7);
    std::vector<std::string> seen = {std::to_string(call(target))};
    for (const recording::SentMessage& message : recording::sent()) {
        seen.push_back(std::to_string(message.header.messageId) + " " + hexText(message.wire));
    }
    for (const recording::LogLine& line : recording::log()) {
        if (line.text.find(kFile) == std::string::npos) {
            seen.push_back(line.text);
        }
    }
    return seen;
}

std::vector<recording::LogLine> ownLines() {
    std::vector<recording::LogLine> own;
    for (recording::LogLine& line : logged::withoutTraces()) {
        if (line.file == kFile) {
            own.push_back(std::move(line));
        }
    }
    return own;
}

}  // namespace

TEST_F(TheDvbApi, ForwardsCommandsAndResultsUnchanged) {
    for (const Operation& operation : operations()) {
        SCOPED_TRACE(operation.name);
        for (const int ofSend : {0, -107, 3}) {
            recording::reset();
            recording::setSendResult(ofSend);
            EXPECT_EQ(operation.call(*api), expectedResult(operation.result, ofSend));
            const std::vector<recording::SentMessage> sent = recording::sent();
            ASSERT_EQ(sent.size(), 1U);
            EXPECT_EQ(sent[0].header.messageId, operation.messageId);
            EXPECT_EQ(hexText(sent[0].wire), hexText(operation.wire));
        }
    }
}

TEST_F(TheDvbApi, PassesAllValuesUnchanged) {
    using velmora::dvbservice::BrowserDVBService;
    const auto ofApi = extremeCalls<DvbAPIInterface>();
    const auto ofService = extremeCalls<BrowserDVBService>();
    for (std::size_t index = 0; index < ofApi.size(); ++index) {
        SCOPED_TRACE(index);
        const std::vector<std::string> expected = outcome(ofService[index], *BrowserDVBService::getInstance());
        EXPECT_GE(expected.size(), 2U);
        EXPECT_EQ(outcome(ofApi[index], *api), expected);
    }
}

TEST_F(TheDvbApi, TracesOnlyTheListedOperations) {
    for (const Operation& operation : operations()) {
        SCOPED_TRACE(operation.name);
        recording::reset();
        operation.call(*api);
        const std::string name = operation.name;
        const std::vector<std::string> expected = {"[TRACE -> " + name + "(IN)] " + kFile + ":" + name + "() \n",
                                                   "[TRACE <- " + name + "(OUT)] " + kFile + ":" + name + "() \n"};
        EXPECT_EQ(ownTraces(), operation.traced ? expected : std::vector<std::string>{});
        if (operation.traced) {
            EXPECT_EQ(recording::log().front().level, 0x5F1388U);
            EXPECT_EQ(recording::log().back().level, 0x5F1388U);
        }
    }
}

TEST_F(TheDvbApi, LogsItsOwnLineBeforeForwarding) {
    for (const Operation& operation : operations()) {
        SCOPED_TRACE(operation.name);
        recording::reset();
        operation.call(*api);
        if (operation.line == nullptr) {
            EXPECT_TRUE(ownLines().empty());
        } else {
            EXPECT_THAT(ownLines(),
                        testing::ElementsAre(logged::tagged(0x5F0FA0, "B-LOG", kFile, operation.name, operation.line)));
            EXPECT_EQ(recording::log().front().file, kFile);
        }
    }
}

TEST_F(TheDvbApi, WaitsForTheEndOfAnAudioSourceChange) {
    std::future<int> result = std::async(std::launch::async, [this] { return api->setAudioSource("hdmi"); });
    ASSERT_TRUE(recording::waitForSent(1));
    const recording::SentMessage sent = recording::sent()[0];
    EXPECT_EQ(sent.header.messageId, 0x2867123AU);
    const auto session =
        static_cast<unsigned int>(sent.wire[0] << 24 | sent.wire[1] << 16 | sent.wire[2] << 8 | sent.wire[3]);
    injectEvent<messages::OnSetAudioSourceFinished>(session, -4);
    EXPECT_EQ(result.get(), -4);
    EXPECT_EQ(ownTraces().size(), 2U);
    EXPECT_EQ(logged::story().front(), "-> setAudioSource");
    EXPECT_EQ(logged::story().back(), "<- setAudioSource");
    EXPECT_TRUE(ownLines().empty());
}

TEST_F(TheDvbApi, ReadsTheChannelBack) {
    injectEvent<messages::OnAcquireDtvServiceInfo>("");
    int onid = 7;
    int tsid = 8;
    int sid = 9;
    EXPECT_EQ(api->getCurrentChannelInfo(onid, tsid, sid), -1);
    EXPECT_EQ(onid, 7);
    injectEvent<messages::OnAcquireDtvServiceInfo>("1:2:3");
    recording::reset();
    EXPECT_EQ(api->getCurrentChannelInfo(onid, tsid, sid), 0);
    EXPECT_EQ(onid, 1);
    EXPECT_EQ(tsid, 2);
    EXPECT_EQ(sid, 3);
    EXPECT_EQ(api->getCurrentCCID(), "ccid:1:2:3");
    EXPECT_TRUE(recording::log().empty());
    api->tuneToService("descriptor", 1, 0);
    recording::reset();
    EXPECT_EQ(api->getCurrentDsd(), "descriptor");
    EXPECT_THAT(logged::story(), testing::ElementsAre("getCurrentDsd: Called,Dsd:[descriptor]\n"));
    injectEvent<messages::OnAcquireDtvServiceInfo>("65536:-7:2147483647");
    EXPECT_EQ(api->getCurrentCCID(), "ccid:65536:-7:2147483647") << "read anew at each call";
    EXPECT_EQ(api->getCurrentChannelInfo(onid, tsid, sid), -1);
    EXPECT_EQ(onid, 1) << "left alone";
    api->tuneToService(12, 1, 2, 3, 0);
    EXPECT_EQ(api->getCurrentDsd(), "");
}

TEST_F(TheDvbApi, AnswersThroughItsTableByPosition) {
    // Slot 6 returns a string by value; a browser calls it by the slot number compiled from the header.
    injectEvent<messages::OnAcquireDtvServiceInfo>("4:5:6");
    using Slot = std::string (*)(DvbAPIInterface*);
    void* const* const table = *reinterpret_cast<void* const* const*>(api);
    const auto getCurrentCCID = reinterpret_cast<Slot>(reinterpret_cast<std::uintptr_t>(table[6]));
    EXPECT_EQ(getCurrentCCID(api), "ccid:4:5:6");
    using PtsSlot = int (*)(DvbAPIInterface*, std::uint32_t);
    const auto sendPtsRequest = reinterpret_cast<PtsSlot>(reinterpret_cast<std::uintptr_t>(table[20]));
    recording::reset();
    recording::setSendResult(-5);
    EXPECT_EQ(sendPtsRequest(api, 1), -5);
    EXPECT_EQ(recording::sent().at(0).header.messageId, 0x28671249U);
}
