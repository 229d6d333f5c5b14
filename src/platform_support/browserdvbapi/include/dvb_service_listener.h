// DVBServiceListener: receives broadcast events. The browser implements it and registers it with
// DvbAPIInterface::addListener().
// Threads: the transport thread calls every operation, one event at a time, listeners in the order of registration. An
//          operation that blocks delays all later events of the process. It may call any operation of the library
//          except setAudioSource(), startSection() and stopSection(), which wait for a later event.
// Fails:   an exception ends the delivery of that event: the listeners after this one do not receive it.
// The binary rules at the top of idtv_unknown.h apply.
#pragma once

#include <cstdint>
#include <string>

namespace velmora::dtv {

/// State of the HbbTV engine. The DTV service defines the numbers; they pass through unchanged.
enum class HbbTVEngineStatus : std::int32_t {};

/// Triplets are original_network_id, transport_stream_id, service_id (EN 300 468, clause 3.1); 65535 means unknown.
class DVBServiceListener {
public:
    virtual ~DVBServiceListener() = default;

    /// The TV changed service. `started`: the new service is being presented; false for every other state.
    virtual void OnChannelChanged(bool started, std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid) = 0;
    /// The AIT sections that follow belong to another channel than those before.
    virtual void onAITChannelInfoChanged() = 0;
    /// The presented component of a type changed (type: 0 video, 1 audio, 2 subtitle). `pid`: its elementary stream.
    virtual void onSelectedComponentChanged(std::uint32_t selectedIndex, std::uint32_t type, std::uint16_t pid,
                                            std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid) = 0;
    /// Details of one component as the TV reports them: the ten values include index, type, pid, encoding, aspect ratio
    /// and audio channels.
    virtual void onComponentInfoChanged(std::uint16_t, std::uint32_t, std::uint32_t, std::uint16_t, std::uint16_t,
                                        std::uint16_t, std::uint16_t, std::uint16_t, std::uint32_t, std::uint16_t) = 0;
    /// A whole AIT section (TS 102 809, clause 5.3.4), table_id to CRC_32, of the channel that was reported last.
    virtual void onAITSectionUpdated(std::uint16_t onId, std::uint16_t tsId, std::uint16_t sId,
                                     const std::string& section) = 0;
    virtual void onHbbTVEngineStatusChanged(HbbTVEngineStatus status) = 0;
    /// A whole PMT section (ISO/IEC 13818-1, clause 2.4.4.8) of that service. `update` tells the first from a changed
    /// one.
    virtual void onPMTSectionUpdated(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid, int update,
                                     std::string section) = 0;
    /// A whole EIT present/following section (EN 300 468, clause 5.2.4) of the presented service.
    virtual void onEITSectionUpdated(int update, std::string section) = 0;
    /// A TEMI timeline value (ISO/IEC 13818-1, Annex U): `mediaTimestamp` counts `timescale` ticks a second and belongs
    /// to the frame with presentation time stamp `ptsValue` (90 kHz, 33 bits).
    virtual void onTimelineInfoDataChange(std::uint8_t, std::uint8_t, std::uint8_t, std::uint32_t timescale,
                                          std::uint64_t mediaTimestamp, std::uint64_t ptsValue) = 0;
    /// All terminals of the HbbTV engine have stopped.
    virtual void onAllTerminalStoped() = 0;
    /// Answer to sendPtsRequest().
    virtual void onPtsNotify(std::uint64_t, std::uint64_t) = 0;
    /// An on-screen display layer that startOSDDetection() watches appeared or disappeared.
    virtual void onOSDStateChanged(std::uint32_t layerID, std::uint32_t state) = 0;
    /// Answer of the CA/DRM system to sendDrmMessage().
    virtual void onDrmResultReply(std::uint64_t session_id, std::uint8_t result_code, const std::string& message,
                                  std::uint16_t slot) = 0;
    virtual void onCaDrmConnected(std::uint64_t session, std::uint16_t slot, std::uint16_t result) = 0;
    virtual void onCaDrmDisonnected(std::uint16_t slot, std::uint16_t result) = 0;
    virtual void onCaDrmSystemStatusChanged(std::uint16_t slot, std::uint16_t status) = 0;
    /// A whole PMT section as onPMTSectionUpdated(), of a service that carries targeted-advertising tags.
    virtual void onDATagsServicePmtSectionUpdated(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid, int update,
                                                  std::string section) = 0;
};

}  // namespace velmora::dtv
