// The listener and its queue.
#include "events.h"

#include <algorithm>

namespace dvbshell {

void EventQueue::put(Event event) {
    {
        const locks::Lock lock(mutex);
        events.push_back(std::move(event));
    }
    filled.notify_one();
}

std::optional<Event> EventQueue::take(Clock::time_point until) {
    locks::Lock lock(mutex);
    if (!filled.wait_until(lock.forWaiting(), until, [this]() REQUIRES(mutex) { return !events.empty(); })) {
        return std::nullopt;
    }
    Event event = std::move(events.front());
    events.pop_front();
    return event;
}

std::vector<message_fields::FieldValue> valuesOf(const Event& event) {
    const bool hasTriplet = std::any_of(
        event.values.begin(), event.values.end(),
        [](const message_fields::FieldValue& value) { return value.field->name == std::string_view("onid"); });
    std::vector<message_fields::FieldValue> values;
    if (event.onid >= 0 && !hasTriplet) {
        values = {namedValue("onid", event.onid), namedValue("tsid", event.tsid), namedValue("sid", event.sid)};
    }
    values.insert(values.end(), event.values.begin(), event.values.end());
    return values;
}

namespace {

int asInt(const message_fields::Value& value) {
    const auto* const number = std::get_if<std::int64_t>(&value);
    return static_cast<int>(number != nullptr ? *number : static_cast<std::int64_t>(std::get<std::uint64_t>(value)));
}

void keep(Event& event, const message_fields::Field& field, message_fields::Value value) {
    const std::string name = field.name;
    if (name == "section") {
        event.section = std::get<std::string>(std::move(value));
        return;
    }
    if (name == "started") {
        event.started = asInt(value) != 0;
    } else if (name == "onid") {
        event.onid = asInt(value);
    } else if (name == "tsid") {
        event.tsid = asInt(value);
    } else if (name == "sid") {
        event.sid = asInt(value);
    } else if (name == "update") {
        event.update = asInt(value);
    }
    event.values.push_back({&field, std::move(value)});
}

class QueueingListener : public velmora::dtv::DVBServiceListener {
public:
    QueueingListener(EventQueue& newQueue, AitSink* newSink) : queue(newQueue), sink(newSink) {}

    void OnChannelChanged(bool started, std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid) override {
        if (sink != nullptr && started) {
            sink->onChannel(onid, tsid, sid);
        }
        put(EventKind::channel, "OnChannelChanged", started, onid, tsid, sid);
    }
    void onAITChannelInfoChanged() override { put(EventKind::aitChannel, "onAITChannelInfoChanged"); }
    void onSelectedComponentChanged(std::uint32_t index, std::uint32_t type, std::uint16_t pid, std::uint16_t onid,
                                    std::uint16_t tsid, std::uint16_t sid) override {
        put(EventKind::other, "onSelectedComponentChanged", index, type, pid, onid, tsid, sid);
    }
    void onComponentInfoChanged(std::uint16_t index, std::uint32_t type, std::uint32_t pid, std::uint16_t encoding,
                                std::uint16_t aspectRatio, std::uint16_t audioChannels, std::uint16_t componentTag,
                                std::uint16_t scrambled, std::uint32_t language, std::uint16_t presented) override {
        put(EventKind::other, "onComponentInfoChanged", index, type, pid, encoding, aspectRatio, audioChannels,
            componentTag, scrambled, language, presented);
    }
    void onAITSectionUpdated(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid,
                             const std::string& section) override {
        put(EventKind::ait, "onAITSectionUpdated", onid, tsid, sid, section);
        if (sink != nullptr) {
            sink->onAit(onid, tsid, sid, section);
        }
    }
    void onHbbTVEngineStatusChanged(velmora::dtv::HbbTVEngineStatus status) override {
        put(EventKind::other, "onHbbTVEngineStatusChanged", status);
    }
    void onPMTSectionUpdated(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid, int update,
                             std::string section) override {
        put(EventKind::pmt, "onPMTSectionUpdated", onid, tsid, sid, update, section);
    }
    void onEITSectionUpdated(int update, std::string section) override {
        put(EventKind::eit, "onEITSectionUpdated", update, section);
    }
    void onTimelineInfoDataChange(std::uint8_t componentTag, std::uint8_t timelineId, std::uint8_t flags,
                                  std::uint32_t timescale, std::uint64_t mediaTimestamp, std::uint64_t pts) override {
        put(EventKind::other, "onTimelineInfoDataChange", componentTag, timelineId, flags, timescale, mediaTimestamp,
            pts);
    }
    void onAllTerminalStoped() override { put(EventKind::other, "onAllTerminalStoped"); }
    void onPtsNotify(std::uint64_t pts, std::uint64_t pcrBase) override {
        put(EventKind::other, "onPtsNotify", pts, pcrBase);
    }
    void onOSDStateChanged(std::uint32_t layer, std::uint32_t state) override {
        put(EventKind::other, "onOSDStateChanged", layer, state);
    }
    void onDrmResultReply(std::uint64_t session, std::uint8_t resultCode, const std::string& message,
                          std::uint16_t slot) override {
        put(EventKind::other, "onDrmResultReply", session, resultCode, message, slot);
    }
    void onCaDrmConnected(std::uint64_t session, std::uint16_t slot, std::uint16_t result) override {
        put(EventKind::other, "onCaDrmConnected", session, slot, result);
    }
    void onCaDrmDisonnected(std::uint16_t slot, std::uint16_t result) override {
        put(EventKind::other, "onCaDrmDisonnected", slot, result);
    }
    void onCaDrmSystemStatusChanged(std::uint16_t slot, std::uint16_t status) override {
        put(EventKind::other, "onCaDrmSystemStatusChanged", slot, status);
    }
    void onDATagsServicePmtSectionUpdated(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid, int update,
                                          std::string section) override {
        put(EventKind::other, "onDATagsServicePmtSectionUpdated", onid, tsid, sid, update, section);
    }

private:
    /// The values get the names of the operation's parameters, in their order.
    template <typename... Parameters>
    void put(EventKind kind, const char* name, const Parameters&... parameters) {
        Event event;
        event.kind = kind;
        event.name = name;
        const std::vector<const message_fields::Field*> fields =
            message_fields::parametersOf(name, sizeof...(parameters));
        [[maybe_unused]] std::size_t index = 0;
        (keep(event, *fields.at(index++), message_fields::valueOf(parameters)), ...);
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
