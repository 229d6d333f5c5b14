// An AIT watcher: feeds the library's AIT catcher, prints the AIT sections of the presented service, then asks for the
// stored ones.
//   ait_watcher
#include <browser_AIT_catcher.h>
#include <dvb_ait_section_interface.h>
#include <dvb_api_interface.h>
#include <dvb_helpers/empty_listener.h>

#include <condition_variable>
#include <cstdio>
#include <deque>
#include <mutex>
#include <optional>

namespace {

using velmora::dtv::IDTVUnknown;
using velmora::dvbservice::BrowserAITCatcher;

struct Channel {
    std::uint16_t onid, tsid, sid;
    bool operator==(const Channel& other) const { return onid == other.onid && tsid == other.tsid && sid == other.sid; }
};

struct ChannelsAit {
    Channel channel;
    std::vector<std::uint8_t> section;
};

/// Passes channels and AIT sections to the catcher, on the transport thread.
class Feeder final : public velmora::dtv::helpers::EmptyListener {
public:
    void OnChannelChanged(bool started, std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid) override {
        if (started) {
            report({onid, tsid, sid});
        }
    }
    /// No change is reported of the channel that was presented before the browser started. Its AIT names it first.
    void onAITSectionUpdated(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid,
                             const std::string& section) override {
        const Channel channel = {onid, tsid, sid};
        if (!(current && *current == channel)) {
            report(channel);
        }
        BrowserAITCatcher::getInstance()->updateAIT(section);
    }

private:
    void report(const Channel& channel) {
        constexpr std::uint16_t kUnused = 0;  // the catcher stores this value and never reads it
        current = channel;
        BrowserAITCatcher::getInstance()->updateCurrentChannelInfo(kUnused, channel.onid, channel.tsid, channel.sid);
    }
    std::optional<Channel> current;
};

/// Receives the catcher's sections, and keeps them for main().
class Client final : public velmora::dtv::AITSectionClient {
public:
    void onCurrentChannelAIT(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid,
                             const std::vector<std::uint8_t>& section) override {
        const std::lock_guard<std::mutex> lock(mutex);
        received.push_back({{onid, tsid, sid}, section});
        filled.notify_one();
    }
    /// The next section, or none within ten seconds.
    std::optional<ChannelsAit> take() {
        std::unique_lock<std::mutex> lock(mutex);
        if (!filled.wait_for(lock, std::chrono::seconds(10), [this] { return !received.empty(); })) {
            return std::nullopt;
        }
        ChannelsAit ait = std::move(received.front());
        received.pop_front();
        return ait;
    }

private:
    std::mutex mutex;
    std::condition_variable filled;
    std::deque<ChannelsAit> received;  // guarded by mutex
};

template <typename Interface>
Interface* interfaceOf(const char* name) {
    IDTVUnknown* found = nullptr;
    DTVAPI_QueryInterface(name, &found);
    return static_cast<Interface*>(found);
}

/// Prints the next section. False when none has arrived, or an empty one: a section that is not stored.
bool print(const char* how, const std::optional<ChannelsAit>& ait) {
    constexpr std::size_t kHeader = 8;
    if (!ait || ait->section.size() < kHeader) {
        std::printf("%s: none\n", how);
        return false;
    }
    std::printf("%s: %u:%u:%u, version %u, section %u of 0 to %u, %zu bytes\n", how, ait->channel.onid,
                ait->channel.tsid, ait->channel.sid, ait->section[5] >> 1U & 0x1FU, ait->section[6], ait->section[7],
                ait->section.size());
    return true;
}

}  // namespace

int main() {
    auto* const api = interfaceOf<velmora::dtv::DvbAPIInterface>("DvbAPIInterface");
    auto* const ait = interfaceOf<velmora::dtv::DVBAITSectionInterface>("DvbAITAPI");
    // The catcher may call its client at any time, so the client is never deleted.
    static auto& client = *new Client;
    ait->registerClient(&client);
    const auto feeder = std::make_shared<Feeder>();
    api->addListener(feeder);
    api->notifyMwhbStart();
    const std::optional<ChannelsAit> first = client.take();
    if (!print("broadcast", first)) {
        return 1;
    }
    ait->getCurrentChannelAIT(&client, first->channel.onid, first->channel.tsid, first->channel.sid);
    return print("stored", client.take()) ? 0 : 1;
}
