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
/// A meaning that is marked (reference) was chosen by the reference service: the library passes the value on, and
/// another DTV service may put something else there. docs/messages.md lists every value with its form.
class DVBServiceListener {
public:
    virtual ~DVBServiceListener() = default;

    /// The TV changed service. `started`: the new service is being presented; false for every other state.
    virtual void OnChannelChanged(bool started, std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid) = 0;
    /// The AIT sections that follow belong to another channel than those before.
    virtual void onAITChannelInfoChanged() = 0;
    /// The presented component of a type changed. `componentIndex`: as in onComponentInfoChanged(), 0xFFFFFFFF if none
    /// is presented. `componentType`: 0 video, 1 audio, 2 subtitle. `pid`: its elementary stream, 8191 if none is
    /// presented.
    virtual void onSelectedComponentChanged(std::uint32_t componentIndex, std::uint32_t componentType,
                                            std::uint16_t pid, std::uint16_t onid, std::uint16_t tsid,
                                            std::uint16_t sid) = 0;
    /// One component of the presented service. `componentIndex`: its place in the PMT, over all types. `componentType`:
    /// 0 video, 1 audio, 2 subtitle. `pid`: its elementary stream. (reference) `encoding`: stream_type, for private
    /// data the descriptor's tag in the high byte. `aspectRatio`: 2 for 4:3, 3 for 16:9, 4 for wider, 0 if unknown.
    /// `audioChannels`: 1, 2, or 6 for surround, 0 if unknown. `componentTag`: component_tag, 0xFFFF if there is none.
    /// `scrambled`: 1 if a CA descriptor applies. `language`: ISO 639-2 code, the first letter in bits 16 to 23, 0 if
    /// unknown. `presented`: 1 if it is presented.
    virtual void onComponentInfoChanged(std::uint16_t componentIndex, std::uint32_t componentType, std::uint32_t pid,
                                        std::uint16_t encoding, std::uint16_t aspectRatio, std::uint16_t audioChannels,
                                        std::uint16_t componentTag, std::uint16_t scrambled, std::uint32_t language,
                                        std::uint16_t presented) = 0;
    /// A whole AIT section (TS 102 809, clause 5.3.4), table_id to CRC_32, of the channel that was reported last.
    virtual void onAITSectionUpdated(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid,
                                     const std::string& section) = 0;
    virtual void onHbbTVEngineStatusChanged(HbbTVEngineStatus engineStatus) = 0;
    /// A whole PMT section (ISO/IEC 13818-1, clause 2.4.4.8) of that service. `update`: 0 the first one, 1 a changed
    /// one.
    virtual void onPMTSectionUpdated(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid, int update,
                                     std::string section) = 0;
    /// A whole EIT present/following section (EN 300 468, clause 5.2.4) of the presented service. `update`: 0 the first
    /// one, 1 a changed one.
    virtual void onEITSectionUpdated(int update, std::string section) = 0;
    /// A TEMI timeline value (ISO/IEC 13818-1, Annex U): `mediaTimestamp` counts `timescale` ticks a second, and
    /// belongs to the frame with presentation time stamp `pts` (90 kHz, 33 bits). (reference) `componentTag` and
    /// `timelineId`: the timeline. `timelineFlags`: 1 paused, 2 discontinuity, 4 force_reload, added up.
    virtual void onTimelineInfoDataChange(std::uint8_t componentTag, std::uint8_t timelineId,
                                          std::uint8_t timelineFlags, std::uint32_t timescale,
                                          std::uint64_t mediaTimestamp, std::uint64_t pts) = 0;
    /// All terminals of the HbbTV engine have stopped.
    virtual void onAllTerminalStoped() = 0;
    /// Answer to sendPtsRequest(): times of 90 kHz, 33 bits. (reference) `pts`: latest PTS of the first video, else of
    /// the first audio. `pcrBase`: base of the latest PCR.
    virtual void onPtsNotify(std::uint64_t pts, std::uint64_t pcrBase) = 0;
    /// An on-screen display layer that startOSDDetection() watches appeared or disappeared. (reference) `osdState`: 1
    /// shown, 0 hidden.
    virtual void onOSDStateChanged(std::uint32_t layer, std::uint32_t osdState) = 0;
    /// Answer of the CA/DRM system to sendDrmMessage(). `resultCode`: OIPF DAE, clause 7.6.1.2. `slot`: the CA
    /// module's, 0xFFFF if there is none.
    virtual void onDrmResultReply(std::uint64_t caSession, std::uint8_t resultCode, const std::string& message,
                                  std::uint16_t slot) = 0;
    /// Answer to connectCa(). `slot`: the CA module's, 0xFFFF if there is none. (reference) `result`: 0, or 1 if there
    /// is no module.
    virtual void onCaDrmConnected(std::uint64_t caSession, std::uint16_t slot, std::uint16_t result) = 0;
    /// Answer to disconnectCa(). (reference) `result`: 0, or 1 if the slot has no module.
    virtual void onCaDrmDisonnected(std::uint16_t slot, std::uint16_t result) = 0;
    /// A CA module came or went. (reference) `moduleStatus`: 1 inserted, 0 removed.
    virtual void onCaDrmSystemStatusChanged(std::uint16_t slot, std::uint16_t moduleStatus) = 0;
    /// A whole PMT section as onPMTSectionUpdated(), of a service that carries targeted-advertising tags.
    virtual void onDATagsServicePmtSectionUpdated(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid, int update,
                                                  std::string section) = 0;
};

}  // namespace velmora::dtv
