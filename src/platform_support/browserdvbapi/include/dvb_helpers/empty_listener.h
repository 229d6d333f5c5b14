// EmptyListener: a DVBServiceListener whose operations do nothing. Derive from it and override the operations you need.
// Header only; not part of the library's binary interface.
// Threads: as DVBServiceListener.
#pragma once

#include "dvb_service_listener.h"

namespace velmora::dtv::helpers {

class EmptyListener : public DVBServiceListener {
public:
    void OnChannelChanged(bool, std::uint16_t, std::uint16_t, std::uint16_t) override {}
    void onAITChannelInfoChanged() override {}
    void onSelectedComponentChanged(std::uint32_t, std::uint32_t, std::uint16_t, std::uint16_t, std::uint16_t,
                                    std::uint16_t) override {}
    void onComponentInfoChanged(std::uint16_t, std::uint32_t, std::uint32_t, std::uint16_t, std::uint16_t,
                                std::uint16_t, std::uint16_t, std::uint16_t, std::uint32_t, std::uint16_t) override {}
    void onAITSectionUpdated(std::uint16_t, std::uint16_t, std::uint16_t, const std::string&) override {}
    void onHbbTVEngineStatusChanged(HbbTVEngineStatus) override {}
    void onPMTSectionUpdated(std::uint16_t, std::uint16_t, std::uint16_t, int, std::string) override {}
    void onEITSectionUpdated(int, std::string) override {}
    void onTimelineInfoDataChange(std::uint8_t, std::uint8_t, std::uint8_t, std::uint32_t, std::uint64_t,
                                  std::uint64_t) override {}
    void onAllTerminalStoped() override {}
    void onPtsNotify(std::uint64_t, std::uint64_t) override {}
    void onOSDStateChanged(std::uint32_t, std::uint32_t) override {}
    void onDrmResultReply(std::uint64_t, std::uint8_t, const std::string&, std::uint16_t) override {}
    void onCaDrmConnected(std::uint64_t, std::uint16_t, std::uint16_t) override {}
    void onCaDrmDisonnected(std::uint16_t, std::uint16_t) override {}
    void onCaDrmSystemStatusChanged(std::uint16_t, std::uint16_t) override {}
    void onDATagsServicePmtSectionUpdated(std::uint16_t, std::uint16_t, std::uint16_t, int, std::string) override {}
};

}  // namespace velmora::dtv::helpers
