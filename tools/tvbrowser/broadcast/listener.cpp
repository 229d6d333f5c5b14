// Posts events.
#include "listener.h"

#include "ait_link.h"
#include "dvb_helpers/empty_listener.h"

namespace tvbrowser {

namespace {

class PostingListener final : public velmora::dtv::helpers::EmptyListener {
public:
    PostingListener(const Library& library, Post newPost, BroadcastEvents& newEvents)
        : post(std::move(newPost)),
          events(newEvents),
          ait(AitLink::make(
              library,
              {[post = post, &events = events](const si::Triplet& triplet, std::uint8_t version) {
                   post([&events, triplet, version] { events.onAitHeard(triplet, version); });
               },
               [post = post, &events = events](const si::Triplet& triplet, const std::vector<std::uint8_t>& section) {
                   post([&events, triplet, section] { events.onAitSection(triplet, section); });
               }})) {}

    /// The replay comes behind the channel.
    void OnChannelChanged(bool started, std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid) override {
        const si::Triplet triplet{onid, tsid, sid};
        post([this, started, triplet] { events.onChannel(started, triplet); });
        if (started) {
            ait.onChannel(triplet);
        }
    }
    void onPMTSectionUpdated(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid, int update,
                             std::string section) override {
        const si::Triplet triplet{onid, tsid, sid};
        post([this, triplet, update, section] { events.onPmt(triplet, update == 0, section); });
    }
    void onEITSectionUpdated(int, std::string section) override {
        post([this, section] { events.onEit(section); });
    }
    void onAITSectionUpdated(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid,
                             const std::string& section) override {
        ait.onAit({onid, tsid, sid}, section);
    }
    void onComponentInfoChanged(std::uint16_t componentIndex, std::uint32_t componentType, std::uint32_t pid,
                                std::uint16_t encoding, std::uint16_t aspectRatio, std::uint16_t audioChannels,
                                std::uint16_t componentTag, std::uint16_t scrambled, std::uint32_t language,
                                std::uint16_t presented) override {
        const ComponentReport report{componentIndex, componentType, pid,          encoding,
                                     aspectRatio,    audioChannels, componentTag, scrambled != 0,
                                     language,       presented != 0};
        post([this, report] { events.onComponent(report); });
    }
    void onSelectedComponentChanged(std::uint32_t componentIndex, std::uint32_t componentType, std::uint16_t pid,
                                    std::uint16_t, std::uint16_t, std::uint16_t) override {
        post([this, componentIndex, componentType, pid] { events.onSelected(componentIndex, componentType, pid); });
    }
    void onHbbTVEngineStatusChanged(velmora::dtv::HbbTVEngineStatus status) override {
        pass("engineStatus", {{"status", static_cast<std::int32_t>(status)}});
    }
    void onAllTerminalStoped() override { pass("terminalsStopped", nullptr); }
    void onPtsNotify(std::uint64_t pts, std::uint64_t pcrBase) override {
        pass("pts", {{"pts", pts}, {"pcr", pcrBase}});
    }
    void onOSDStateChanged(std::uint32_t layer, std::uint32_t state) override {
        pass("osd", {{"layer", layer}, {"state", state}});
    }
    void onDrmResultReply(std::uint64_t session, std::uint8_t code, const std::string& message,
                          std::uint16_t) override {
        pass("drmReply", {{"session", session}, {"code", code}, {"message", safeText(message)}});
    }
    void onCaDrmConnected(std::uint64_t session, std::uint16_t slot, std::uint16_t result) override {
        pass("caConnected", {{"session", session}, {"slot", slot}, {"result", result}});
    }
    void onCaDrmDisonnected(std::uint16_t slot, std::uint16_t result) override {
        pass("caDisconnected", {{"slot", slot}, {"result", result}});
    }
    void onCaDrmSystemStatusChanged(std::uint16_t slot, std::uint16_t status) override {
        pass("drmSystemStatus", {{"slot", slot}, {"status", status}});
    }

private:
    void pass(const char* name, json value) {
        post([this, name, value = std::move(value)] { events.onOther(name, value); });
    }

    const Post post;
    BroadcastEvents& events;
    AitLink& ait;
};

}  // namespace

std::shared_ptr<velmora::dtv::DVBServiceListener> makeListener(const Library& library, const Post& post,
                                                               BroadcastEvents& events) {
    return std::make_shared<PostingListener>(library, post, events);
}

}  // namespace tvbrowser
