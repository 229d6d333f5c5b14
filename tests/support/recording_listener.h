// A listener of the DVB API that records every call as text, "operation(value, value)": numbers in decimal, strings in
// hexadecimal after their length.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "dvb_service_listener.h"
#include "locks/lock.h"
#include "shown_values.h"

class RecordingListener : public velmora::dtv::DVBServiceListener {
public:
    std::vector<std::string> calls() const {
        const locks::Lock lock(mutex);
        return heard;
    }

    /// Called inside every operation, after the call was recorded.
    std::function<void()> reaction;

    void OnChannelChanged(bool started, std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid) override {
        keep("OnChannelChanged", int{started}, onid, tsid, sid);
    }
    void onAITChannelInfoChanged() override { keep("onAITChannelInfoChanged"); }
    void onSelectedComponentChanged(std::uint32_t selectedIndex, std::uint32_t type, std::uint16_t pid,
                                    std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid) override {
        keep("onSelectedComponentChanged", selectedIndex, type, pid, onid, tsid, sid);
    }
    void onComponentInfoChanged(std::uint16_t a, std::uint32_t b, std::uint32_t c, std::uint16_t d, std::uint16_t e,
                                std::uint16_t f, std::uint16_t g, std::uint16_t h, std::uint32_t i,
                                std::uint16_t j) override {
        keep("onComponentInfoChanged", a, b, c, d, e, f, g, h, i, j);
    }
    void onAITSectionUpdated(std::uint16_t onId, std::uint16_t tsId, std::uint16_t sId,
                             const std::string& section) override {
        keep("onAITSectionUpdated", onId, tsId, sId, section);
    }
    void onHbbTVEngineStatusChanged(velmora::dtv::HbbTVEngineStatus status) override {
        keep("onHbbTVEngineStatusChanged", static_cast<int>(status));
    }
    void onPMTSectionUpdated(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid, int update,
                             std::string section) override {
        keep("onPMTSectionUpdated", onid, tsid, sid, update, section);
    }
    void onEITSectionUpdated(int update, std::string section) override { keep("onEITSectionUpdated", update, section); }
    void onTimelineInfoDataChange(std::uint8_t a, std::uint8_t b, std::uint8_t c, std::uint32_t timescale,
                                  std::uint64_t mediaTimestamp, std::uint64_t ptsValue) override {
        keep("onTimelineInfoDataChange", a, b, c, timescale, mediaTimestamp, ptsValue);
    }
    void onAllTerminalStoped() override { keep("onAllTerminalStoped"); }
    void onPtsNotify(std::uint64_t a, std::uint64_t b) override { keep("onPtsNotify", a, b); }
    void onOSDStateChanged(std::uint32_t layerID, std::uint32_t state) override {
        keep("onOSDStateChanged", layerID, state);
    }
    void onDrmResultReply(std::uint64_t session_id, std::uint8_t result_code, const std::string& message,
                          std::uint16_t slot) override {
        keep("onDrmResultReply", session_id, result_code, message, slot);
    }
    void onCaDrmConnected(std::uint64_t session, std::uint16_t slot, std::uint16_t result) override {
        keep("onCaDrmConnected", session, slot, result);
    }
    void onCaDrmDisonnected(std::uint16_t slot, std::uint16_t result) override {
        keep("onCaDrmDisonnected", slot, result);
    }
    void onCaDrmSystemStatusChanged(std::uint16_t slot, std::uint16_t status) override {
        keep("onCaDrmSystemStatusChanged", slot, status);
    }
    void onDATagsServicePmtSectionUpdated(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid, int update,
                                          std::string section) override {
        keep("onDATagsServicePmtSectionUpdated", onid, tsid, sid, update, section);
    }

private:
    template <typename... Values>
    void keep(const char* operation, const Values&... values) {
        std::string text = shownCall(operation, values...);
        {
            const locks::Lock lock(mutex);
            heard.push_back(std::move(text));
        }
        if (reaction) {
            reaction();
        }
    }

    mutable std::mutex mutex;
    std::vector<std::string> heard GUARDED_BY(mutex);
};
