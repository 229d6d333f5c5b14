// DvbAPIInterface ("DvbAPIInterface"): tuning, the current channel, components, and requests that the DTV service
// answers with events to the registered listeners.
// Threads: any. Only setAudioSource() waits for the DTV service; the other operations return at once.
// Fails:   operations that return an int: 0 when the request was handed to the DTV service, negative when it was not
//          (-1 when no DTV service was ever found). Operations without a result log their failures. Only the exceptions
//          of the first use of the DTV service pass through. Arguments are not checked; the service gets them
//          unchanged.
// A meaning that is marked (reference) was chosen by the reference service; another DTV service may take something
// else. docs/messages.md lists every value with its form. The binary rules at the top of idtv_unknown.h apply.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "dvb_service_listener.h"
#include "idtv_unknown.h"

namespace velmora::dtv {

class DvbAPIInterface : public IDTVUnknown {
public:
    /// The triplet of the service being presented. 0, or -1 with the outputs untouched while any of the three is
    /// unknown.
    virtual int getCurrentChannelInfo(int& onid, int& tsid, int& sid) = 0;
    /// "ccid:" and the triplet in decimal, parts joined by ":"; -1 for an unknown part. Digits are grouped if the
    /// process's C++ locale groups them.
    virtual std::string getCurrentCCID() = 0;
    /// The delivery system descriptor of the last tune by descriptor. It becomes empty after a tune by triplet, and
    /// after the first PMT of a service other than the one last tuned by triplet. That is usually the first PMT of the
    /// service that the descriptor tuned to, so copy the descriptor if you need it longer.
    virtual std::string getCurrentDsd() = 0;
    /// Tells the TV that the broadcast-related application could not be started. 0.
    virtual int sendApplicationStartedFailed() = 0;
    /// Tells the TV that the broadcast-related application runs. 0.
    virtual int sendApplicationStartedSucceeded() = 0;
    /// Asks for the presented service's AIT sections again.
    virtual void triggerAitRestart() = 0;
    /// Tunes by triplet: OIPF channel idType (OIPF DAE, clause 7.13.11), original_network_id, transport_stream_id,
    /// service_id, and `flags`, which pass through to the service. OnChannelChanged() reports the outcome.
    virtual void tuneToService(int idType, int onid, int tsid, int sid, int flags) = 0;
    /// Tunes by the bytes of a delivery system descriptor (EN 300 468, clause 6.2.13), one character a byte, the
    /// service_id, and `flags`, which pass through to the service.
    virtual void tuneToService(const std::string& dsd, int sid, int flags) = 0;
    /// Presents one elementary stream of the service; the three values pass through in order. (reference)
    /// `componentType`: 0 video, 1 audio, 2 subtitle. `pid`: the stream. `reserved`: not used.
    virtual void tuneToComponent(int componentType, int pid, int reserved) = 0;
    /// Presents, or stops presenting, the components of a type: 0 video, 1 audio, 2 subtitle.
    virtual void selectComponent(int componentType) = 0;
    virtual void unselectComponent(int componentType) = 0;
    /// Chooses the audio source and waits until the TV has switched; without an answer it never returns. Do not call it
    /// from a listener. Returns the TV's result: 0 for success.
    virtual int setAudioSource(std::string audioSource) = 0;
    /// Registers a listener; the library shares its ownership. A second registration of the same listener has no
    /// effect.
    virtual void addListener(std::shared_ptr<DVBServiceListener> listener) = 0;
    /// Removes a listener. It still receives an event whose delivery has begun.
    virtual void removeListener(std::shared_ptr<DVBServiceListener> listener) = 0;
    /// Tells the TV that the browser has started. The TV then sends what it knows of the current service.
    virtual void notifyMwhbStart() = 0;
    /// Asks for the presentation time stamp now; answered by onPtsNotify(). (reference) `ptsRequest`: not used.
    virtual int sendPtsRequest(std::uint32_t ptsRequest) = 0;
    /// Starts reporting a TEMI timeline by onTimelineInfoDataChange(); HbbTV names it by component_tag and timeline_id
    /// (TS 103 286-2, clause 13.3.2). The three values pass through in order. (reference) `componentTag` and
    /// `timelineId`: the timeline. `reserved`: not used.
    virtual int startTemiTimelineRequest(std::uint32_t componentTag, std::uint32_t timelineId,
                                         std::uint32_t reserved) = 0;
    virtual int stopTemiTimelineRequest() = 0;
    /// Starts, or stops, reports of an on-screen display layer by onOSDStateChanged().
    virtual int startOSDDetection(std::uint32_t layer) = 0;
    virtual int stopOSDDetection(std::uint32_t layer) = 0;
    /// Sends a message to a CA/DRM system (OIPF DAE, clause 7.6.1); answered by onDrmResultReply(). `caSession`: a
    /// number of the browser's choice, the same in the answer. `caSystemId`: CA_system_id. (reference) `slot`: not
    /// used, the lowest slot with a module gets the message. `messageType` and `message`: the message.
    virtual int sendDrmMessage(std::uint64_t caSession, std::uint16_t caSystemId, std::uint16_t slot,
                               const std::string& messageType, const std::string& message) = 0;
    /// Connects to the CA system; answered by onCaDrmConnected().
    virtual int connectCa(std::uint64_t caSession) = 0;
    /// Disconnects from the CA system; answered by onCaDrmDisonnected().
    virtual int disconnectCa(std::uint16_t slot) = 0;
    /// Reports an operator application's installation; a type or status other than 0 and 1 is sent as 0.
    virtual int sendOpAppInstallStatus(int opappType, int installStatus) = 0;
    /// Asks for the presented service's PMT; answered by onDATagsServicePmtSectionUpdated().
    virtual void vbStartDtvInfoRequest() = 0;
};

}  // namespace velmora::dtv
