// The listener and its queue.
#include "events.h"

namespace dvbshell {

void EventQueue::put(Event event) {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        events.push_back(std::move(event));
    }
    filled.notify_one();
}

std::optional<Event> EventQueue::take(Clock::time_point until) {
    std::unique_lock<std::mutex> lock(mutex);
    if (!filled.wait_until(lock, until, [this] { return !events.empty(); })) {
        return std::nullopt;
    }
    Event event = std::move(events.front());
    events.pop_front();
    return event;
}

namespace {

using Values = std::vector<std::pair<std::string, std::string>>;

std::string shown(std::uint64_t number) {
    return std::to_string(number);
}
std::string shown(int number) {
    return std::to_string(number);
}
std::string shown(const std::string& text) {
    return text;
}

template <typename Value>
std::pair<std::string, std::string> named(const char* name, const Value& value) {
    return {name, shown(value)};
}

class QueueingListener : public velmora::dtv::DVBServiceListener {
public:
    QueueingListener(EventQueue& newQueue, AitSink* newSink) : queue(newQueue), sink(newSink) {}

    void OnChannelChanged(bool started, std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid) override {
        if (sink != nullptr && started) {
            sink->onChannel(onid, tsid, sid);
        }
        Event event = of(EventKind::channel, "OnChannelChanged", onid, tsid, sid);
        event.started = started;
        queue.put(std::move(event));
    }
    void onAITChannelInfoChanged() override { put(EventKind::aitChannel, "onAITChannelInfoChanged", {}); }
    void onSelectedComponentChanged(std::uint32_t selectedIndex, std::uint32_t type, std::uint16_t pid,
                                    std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid) override {
        put(EventKind::other, "onSelectedComponentChanged",
            {named("index", std::uint64_t{selectedIndex}), named("type", std::uint64_t{type}), named("pid", int{pid}),
             named("onid", int{onid}), named("tsid", int{tsid}), named("sid", int{sid})});
    }
    void onComponentInfoChanged(std::uint16_t index, std::uint32_t type, std::uint32_t pid, std::uint16_t encoding,
                                std::uint16_t aspectRatio, std::uint16_t audioChannels, std::uint16_t seventh,
                                std::uint16_t eighth, std::uint32_t ninth, std::uint16_t tenth) override {
        put(EventKind::other, "onComponentInfoChanged",
            {named("index", int{index}), named("type", std::uint64_t{type}), named("pid", std::uint64_t{pid}),
             named("encoding", int{encoding}), named("aspect", int{aspectRatio}), named("channels", int{audioChannels}),
             named("7", int{seventh}), named("8", int{eighth}), named("9", std::uint64_t{ninth}),
             named("10", int{tenth})});
    }
    void onAITSectionUpdated(std::uint16_t onId, std::uint16_t tsId, std::uint16_t sId,
                             const std::string& section) override {
        Event event = of(EventKind::ait, "onAITSectionUpdated", onId, tsId, sId);
        event.section = section;
        queue.put(std::move(event));
        if (sink != nullptr) {
            sink->onAit(onId, tsId, sId, section);
        }
    }
    void onHbbTVEngineStatusChanged(velmora::dtv::HbbTVEngineStatus status) override {
        put(EventKind::other, "onHbbTVEngineStatusChanged", {named("status", static_cast<int>(status))});
    }
    void onPMTSectionUpdated(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid, int update,
                             std::string section) override {
        putPmt("onPMTSectionUpdated", EventKind::pmt, of(EventKind::pmt, "", onid, tsid, sid), update, section);
    }
    void onEITSectionUpdated(int update, std::string section) override {
        Event event;
        event.kind = EventKind::eit;
        event.name = "onEITSectionUpdated";
        event.update = update;
        event.section = std::move(section);
        queue.put(std::move(event));
    }
    void onTimelineInfoDataChange(std::uint8_t first, std::uint8_t second, std::uint8_t third, std::uint32_t timescale,
                                  std::uint64_t mediaTimestamp, std::uint64_t ptsValue) override {
        put(EventKind::other, "onTimelineInfoDataChange",
            {named("1", int{first}), named("2", int{second}), named("3", int{third}),
             named("timescale", std::uint64_t{timescale}), named("time", mediaTimestamp), named("pts", ptsValue)});
    }
    void onAllTerminalStoped() override { put(EventKind::other, "onAllTerminalStoped", {}); }
    void onPtsNotify(std::uint64_t first, std::uint64_t second) override {
        put(EventKind::other, "onPtsNotify", {named("1", first), named("2", second)});
    }
    void onOSDStateChanged(std::uint32_t layerID, std::uint32_t state) override {
        put(EventKind::other, "onOSDStateChanged",
            {named("layer", std::uint64_t{layerID}), named("state", std::uint64_t{state})});
    }
    void onDrmResultReply(std::uint64_t session_id, std::uint8_t result_code, const std::string& message,
                          std::uint16_t slot) override {
        put(EventKind::other, "onDrmResultReply",
            {named("session", session_id), named("result", int{result_code}), named("message", message),
             named("slot", int{slot})});
    }
    void onCaDrmConnected(std::uint64_t session, std::uint16_t slot, std::uint16_t result) override {
        put(EventKind::other, "onCaDrmConnected",
            {named("session", session), named("slot", int{slot}), named("result", int{result})});
    }
    void onCaDrmDisonnected(std::uint16_t slot, std::uint16_t result) override {
        put(EventKind::other, "onCaDrmDisonnected", {named("slot", int{slot}), named("result", int{result})});
    }
    void onCaDrmSystemStatusChanged(std::uint16_t slot, std::uint16_t status) override {
        put(EventKind::other, "onCaDrmSystemStatusChanged", {named("slot", int{slot}), named("status", int{status})});
    }
    void onDATagsServicePmtSectionUpdated(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid, int update,
                                          std::string section) override {
        putPmt("onDATagsServicePmtSectionUpdated", EventKind::other, of(EventKind::other, "", onid, tsid, sid), update,
               section);
    }

private:
    static Event of(EventKind kind, const char* name, int onid, int tsid, int sid) {
        Event event;
        event.kind = kind;
        event.name = name;
        event.onid = onid;
        event.tsid = tsid;
        event.sid = sid;
        return event;
    }
    void put(EventKind kind, const char* name, Values values) {
        Event event;
        event.kind = kind;
        event.name = name;
        event.values = std::move(values);
        queue.put(std::move(event));
    }
    void putPmt(const char* name, EventKind kind, Event event, int update, std::string& section) {
        event.kind = kind;
        event.name = name;
        event.update = update;
        event.section = std::move(section);
        queue.put(std::move(event));
    }

    EventQueue& queue;
    AitSink* sink;
};

}  // namespace

std::shared_ptr<velmora::dtv::DVBServiceListener> makeListener(EventQueue& queue, AitSink* sink) {
    return std::make_shared<QueueingListener>(queue, sink);
}

}  // namespace dvbshell
