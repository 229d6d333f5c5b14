// A service object with filters on the recording platform. The test answers the sent messages, or the fixture does so
// at once.
#pragma once

#include <algorithm>

#include "handshake_clock.h"
#include "locks/lock.h"
#include "service_fixture.h"

namespace velmora::dvbservice {

/// Gives tests access to the private members of filter records.
struct FilterParameterTestAccess {
    static unsigned int state(const FilterParameter& filter) { return filter.state; }
    static std::string dataSlot(const FilterParameter& filter) { return filter.dataSlot.get(); }
};

}  // namespace velmora::dvbservice

using velmora::dvbservice::FilterParameter;
using velmora::dvbservice::FilterParameterTestAccess;

/// Records the sections that it receives.
class KeepingSectionClient final : public velmora::dtv::SectionFilterClient {
public:
    struct Section {
        std::string session;
        unsigned int pid;
        std::vector<unsigned char> bytes;
    };
    std::function<void()> reaction;

    void onSectionData(const std::string& sessionName, unsigned int pid, const unsigned char* data,
                       unsigned int length) override {
        {
            const locks::Lock lock(mutex);
            kept.push_back({sessionName, pid, {data, data + length}});
        }
        if (reaction) {
            reaction();
        }
    }
    std::vector<Section> sections() const {
        const locks::Lock lock(mutex);
        return kept;
    }

private:
    mutable std::mutex mutex;
    std::vector<Section> kept GUARDED_BY(mutex);
};

class AFilter : public AServiceObject {
protected:
    ~AFilter() override {
        velmora::dvbservice::handshakeClock = &velmora::dvbservice::monotonicSeconds;
        recording::setSendAction(nullptr);
        // The delivery thread runs until the process ends, so its object and the client must live as long.
        static auto* const kept = new std::vector<boost::shared_ptr<velmora::dvbservice::BrowserDVBService>>;
        kept->push_back(service);
        static auto* const keptClients = new std::vector<std::shared_ptr<KeepingSectionClient>>;
        keptClients->push_back(ownedClient);
    }

    /// Answers every open and close request with `result` on the sending thread. `sendResult` is the result of the
    /// send.
    void answerWith(short result, int sendResult = 0) {
        recording::setSendAction([this, result, sendResult](const recording::SentMessage& message) {
            const auto text = [&message](std::size_t fixed) {
                return std::string(message.wire.begin() + static_cast<std::ptrdiff_t>(fixed), message.wire.end());
            };
            frame::MsgIds ids;
            if (message.header.messageId == 0x28671243) {
                const unsigned int pid = static_cast<unsigned int>(message.wire[10]) << 8U | message.wire[11];
                const std::string session = text(28).substr(0, message.wire[3]);
                service->onBrowserOpenFilterConf(ids, {}, pid, session, result);
            } else if (message.header.messageId == 0x28671244) {
                service->onBrowserOCloseFilterConf(ids, {}, text(8), result);
            }
            return sendResult;
        });
    }
    boost::shared_ptr<FilterParameter> recordOf(const std::string& session) {
        return service->findFilterParameterBySessionName(session);
    }
    /// Recognises the messages whose level is failure, by their beginning.
    static bool isFailure(const std::string& message) {
        const std::vector<std::string> failures = {"Invalid ",
                                                   " Filter For Session Not Found",
                                                   "Unknown Filter closed",
                                                   "Unable to remove filter",
                                                   "Wait response timeout",
                                                   "Failed to ",
                                                   "Error Allocate memory",
                                                   "Sending section through shared memory is removed"};
        return std::any_of(failures.begin(), failures.end(),
                           [&message](const std::string& failure) { return message.rfind(failure, 0) == 0; });
    }
    /// The messages of a function's captured lines. Checks the level, tag and file of each.
    static std::vector<std::string> messagesOf(const std::string& function) {
        std::vector<std::string> messages;
        for (const recording::LogLine& line : recording::logOf(function)) {
            if (line.level == blog::kTrace) {
                continue;
            }
            EXPECT_EQ(line.level, isFailure(line.message) ? kFailure : kOrdinary) << line.message;
            EXPECT_EQ(line.tag, kTag) << line.message;
            EXPECT_THAT(line.file, testing::StartsWith("browser_dvb_service_")) << line.message;
            messages.push_back(line.message);
        }
        return messages;
    }
    static std::string pointerText(const void* pointer) {
        char text[32];
        std::snprintf(text, sizeof text, "%p", pointer);
        return text;
    }

    std::shared_ptr<KeepingSectionClient> ownedClient = std::make_shared<KeepingSectionClient>();
    KeepingSectionClient& client = *ownedClient;
    const unsigned char match[3] = {0x42, 0x00, 0x01};
    const unsigned char bits[3] = {0xFF, 0x00, 0xFF};
};
