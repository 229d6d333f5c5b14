// The DVB API's listeners: their registry, and the delivery of each event to a copy of it.
#include <algorithm>
#include <utility>

#include "browser_dvb_apis.h"
#include "browser_log.h"

namespace velmora::dvbservice {

namespace {

constexpr const char* kBlogTag = kTagBrowser;

std::uint16_t narrow(const std::atomic<std::int32_t>& value) {
    return static_cast<std::uint16_t>(value.load(std::memory_order_relaxed));
}

}  // namespace

void BrowserDvbAPI::addListener(std::shared_ptr<dtv::DVBServiceListener> listener) {
    const locks::Lock lock(listenersMutex);
    if (std::find(listeners->begin(), listeners->end(), listener) == listeners->end()) {
        auto more = std::make_shared<Listeners>(*listeners);
        more->push_back(std::move(listener));
        listeners = std::move(more);
    }
}

void BrowserDvbAPI::removeListener(std::shared_ptr<dtv::DVBServiceListener> listener) {
    std::shared_ptr<const Listeners> before;  // its listeners may end here, without the lock
    const locks::Lock lock(listenersMutex);
    const auto found = std::find(listeners->begin(), listeners->end(), listener);
    if (found != listeners->end()) {
        auto rest = std::make_shared<Listeners>(*listeners);
        rest->erase(rest->begin() + (found - listeners->begin()));
        before = std::exchange(listeners, std::move(rest));
    }
}

std::shared_ptr<const BrowserDvbAPI::Listeners> BrowserDvbAPI::listenersNow() {
    const locks::Lock lock(listenersMutex);
    return listeners;
}

/// A null listener can be registered; it is skipped here.
template <typename Call>
void BrowserDvbAPI::forEachListener(Call call) {
    const std::shared_ptr<const Listeners> now = listenersNow();
    for (const std::shared_ptr<dtv::DVBServiceListener>& listener : *now) {
        if (listener) {
            call(*listener);
        }
    }
}

void BrowserDvbAPI::OnChannelChanged(bool started, std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid) {
    BLOG_TRACE(__func__);
    forEachListener([=](auto& listener) { listener.OnChannelChanged(started, onid, tsid, sid); });
}

void BrowserDvbAPI::onAITChannelInfoChanged(std::int16_t, std::uint16_t onId, std::uint16_t tsId, std::uint16_t sId) {
    BLOG_TRACE(__func__);
    BLOG_TAGGED(blog::kOrdinary, "New AIT ChannelInfo: %d,%d,%d\n", onId, tsId, sId);
    aitOnId.store(onId, std::memory_order_relaxed);
    aitTsId.store(tsId, std::memory_order_relaxed);
    aitSId.store(sId, std::memory_order_relaxed);
    forEachListener([](auto& listener) { listener.onAITChannelInfoChanged(); });
}

void BrowserDvbAPI::onSelectedComponentChanged(std::uint32_t selectedIndex, std::uint32_t type, std::uint16_t pid,
                                               std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid) {
    forEachListener(
        [=](auto& listener) { listener.onSelectedComponentChanged(selectedIndex, type, pid, onid, tsid, sid); });
}

void BrowserDvbAPI::onComponentInfoChanged(std::uint16_t index, std::uint32_t type, std::uint32_t pid,
                                           std::uint16_t encoding, std::uint16_t aspectRatio,
                                           std::uint16_t audioChannels, std::uint16_t seventh, std::uint16_t eighth,
                                           std::uint32_t ninth, std::uint16_t tenth) {
    forEachListener([=](auto& listener) {
        listener.onComponentInfoChanged(index, type, pid, encoding, aspectRatio, audioChannels, seventh, eighth, ninth,
                                        tenth);
    });
}

void BrowserDvbAPI::onAITSectionUpdated(const std::string& section) {
    BLOG_TAGGED(blog::kOrdinary, "New AIT Section: %d,%d,%d, len: %d\n", aitOnId.load(std::memory_order_relaxed),
                aitTsId.load(std::memory_order_relaxed), aitSId.load(std::memory_order_relaxed),
                static_cast<int>(section.size()));
    forEachListener([this, &section](auto& listener) {
        listener.onAITSectionUpdated(narrow(aitOnId), narrow(aitTsId), narrow(aitSId), section);
    });
}

void BrowserDvbAPI::onHbbTVEngineStatusChanged(dtv::HbbTVEngineStatus status) {
    forEachListener([=](auto& listener) { listener.onHbbTVEngineStatusChanged(status); });
}

void BrowserDvbAPI::onPMTSectionUpdated(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid, int update,
                                        const std::string& section) {
    forEachListener([&](auto& listener) { listener.onPMTSectionUpdated(onid, tsid, sid, update, section); });
}

void BrowserDvbAPI::onEITSectionUpdated(int update, const std::string& section) {
    forEachListener([&](auto& listener) { listener.onEITSectionUpdated(update, section); });
}

void BrowserDvbAPI::onTimelineInfoDataChange(std::uint8_t first, std::uint8_t second, std::uint8_t third,
                                             std::uint32_t timescale, std::uint64_t mediaTimestamp,
                                             std::uint64_t ptsValue) {
    forEachListener([=](auto& listener) {
        listener.onTimelineInfoDataChange(first, second, third, timescale, mediaTimestamp, ptsValue);
    });
}

void BrowserDvbAPI::onAllTerminalStoped() {
    forEachListener([](auto& listener) { listener.onAllTerminalStoped(); });
}

void BrowserDvbAPI::onPtsNotify(std::uint64_t first, std::uint64_t second) {
    forEachListener([=](auto& listener) { listener.onPtsNotify(first, second); });
}

void BrowserDvbAPI::onOSDStateChanged(std::uint32_t layerID, std::uint32_t state) {
    forEachListener([=](auto& listener) { listener.onOSDStateChanged(layerID, state); });
}

void BrowserDvbAPI::onDrmResultReply(std::uint64_t session_id, std::uint8_t result_code, const std::string& message,
                                     std::uint16_t slot) {
    forEachListener([&](auto& listener) { listener.onDrmResultReply(session_id, result_code, message, slot); });
}

void BrowserDvbAPI::onCaDrmConnected(std::uint64_t session, std::uint16_t slot, std::uint16_t result) {
    forEachListener([=](auto& listener) { listener.onCaDrmConnected(session, slot, result); });
}

void BrowserDvbAPI::onCaDrmDisonnected(std::uint16_t slot, std::uint16_t result) {
    forEachListener([=](auto& listener) { listener.onCaDrmDisonnected(slot, result); });
}

void BrowserDvbAPI::onCaDrmSystemStatusChanged(std::uint16_t slot, std::uint16_t status) {
    forEachListener([=](auto& listener) { listener.onCaDrmSystemStatusChanged(slot, status); });
}

void BrowserDvbAPI::onDATagsServicePmtSectionUpdated(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid,
                                                     int update, const std::string& section) {
    forEachListener(
        [&](auto& listener) { listener.onDATagsServicePmtSectionUpdated(onid, tsid, sid, update, section); });
}

}  // namespace velmora::dvbservice
