// Events that go on to the DVB API's listeners, and the audio-source report. Channel events are in _channel, filter
// events in _handshake and _sections.
#include "browser_dvb_apis.h"
#include "browser_dvb_service.h"
#include "browser_log.h"
#include "trace_scope.h"

namespace velmora::dvbservice {

namespace {

constexpr const char* kBlogTag = kTagService;

int lengthOf(const std::string& bytes) {
    return static_cast<int>(bytes.size());
}

}  // namespace

int BrowserDVBService::onAitChannelInfoUpdated(frame::MsgIds&, const frame::TransportInfo&, short first,
                                               unsigned short aitOnid, unsigned short aitTsid, unsigned short aitSid) {
    TRACE_SCOPE();
    BLOG_PLAIN(blog::kOrdinary, "called,AIT ChannelInfoUpdate: (%d-%d:%d:%d).\n", first, aitOnid, aitTsid, aitSid);
    BrowserDvbAPI::getInstance()->onAITChannelInfoChanged(first, aitOnid, aitTsid, aitSid);
    return 0;
}

int BrowserDVBService::onAitParsingStateChanged(frame::MsgIds&, const frame::TransportInfo&, unsigned short state) {
    BLOG_PLAIN(blog::kOrdinary, "ait parsing state change:state = %d.\n", state);
    return 0;
}

int BrowserDVBService::onAitSectionAvailable(frame::MsgIds&, const frame::TransportInfo&, const std::string& section) {
    TRACE_SCOPE();
    BLOG_PLAIN(blog::kOrdinary, "called,AIT section len:%d.\n", lengthOf(section));
    BrowserDvbAPI::getInstance()->onAITSectionUpdated(section);
    return 0;
}

int BrowserDVBService::onHbbtvEngineStatusChanged(frame::MsgIds&, const frame::TransportInfo&, int status) {
    TRACE_SCOPE();
    BLOG_PLAIN(blog::kOrdinary, "called, engine status %d.\n", status);
    BrowserDvbAPI::getInstance()->onHbbTVEngineStatusChanged(static_cast<dtv::HbbTVEngineStatus>(status));
    return 0;
}

int BrowserDVBService::onPmtDataChange(frame::MsgIds&, const frame::TransportInfo&, unsigned short pmtOnid,
                                       unsigned short pmtTsid, unsigned short pmtSid, int update,
                                       const std::string& section) {
    BLOG_PLAIN(blog::kOrdinary, "onid:%d, tsid:%d, sid:%d, update:%d,section len %d.\n", pmtOnid, pmtTsid, pmtSid,
               update, lengthOf(section));
    BrowserDvbAPI::getInstance()->onPMTSectionUpdated(pmtOnid, pmtTsid, pmtSid, update, section);
    // A PMT of any service other than the one last tuned by triplet clears the stored descriptor.
    const int last = pmtServiceId.load(std::memory_order_relaxed);
    if (pmtSid != last) {
        BLOG_PLAIN(blog::kOrdinary, "pmt sid change last = %d, new=%d \n", last, pmtSid);
        pmtServiceId.store(-1, std::memory_order_relaxed);
        dsd.set("");
    }
    return 0;
}

int BrowserDVBService::onEitDataChange(frame::MsgIds&, const frame::TransportInfo&, int update,
                                       const std::string& section) {
    BLOG_PLAIN(blog::kOrdinary, "update:%d,section len %d.\n", update, lengthOf(section));
    BrowserDvbAPI::getInstance()->onEITSectionUpdated(update, section);
    return 0;
}

int BrowserDVBService::onTimelineInfoChange(frame::MsgIds&, const frame::TransportInfo&, unsigned char first,
                                            unsigned char second, unsigned char third, unsigned int timescale,
                                            unsigned long long mediaTimestamp, unsigned long long ptsValue) {
    BLOG_PLAIN(blog::kOrdinary, "onTimelineInfoChange update data timescale:%lu mediaTimestamp:%llu ptsValue:%llu.\n",
               static_cast<unsigned long>(timescale), mediaTimestamp, ptsValue);
    BrowserDvbAPI::getInstance()->onTimelineInfoDataChange(first, second, third, timescale, mediaTimestamp, ptsValue);
    return 0;
}

int BrowserDVBService::onSelectedComponentChange(frame::MsgIds&, const frame::TransportInfo&,
                                                 unsigned int selectedIndex, unsigned int type, unsigned short pid,
                                                 unsigned short ofOnid, unsigned short ofTsid, unsigned short ofSid) {
    BLOG_PLAIN(blog::kOrdinary, "selectedIndex:%d, type:%d,pid:%d,onid:%d,tsid:%d,sid:%d\n",
               static_cast<int>(selectedIndex), static_cast<int>(type), pid, ofOnid, ofTsid, ofSid);
    BrowserDvbAPI::getInstance()->onSelectedComponentChanged(selectedIndex, type, pid, ofOnid, ofTsid, ofSid);
    return 0;
}

int BrowserDVBService::onComponentInfoChange(frame::MsgIds&, const frame::TransportInfo&, unsigned short index,
                                             unsigned int type, unsigned int pid, unsigned short encoding,
                                             unsigned short aspectRatio, unsigned short audioChannels,
                                             unsigned short seventh, unsigned short eighth, unsigned int ninth,
                                             unsigned short tenth) {
    BLOG_PLAIN(blog::kOrdinary, "index:%d, type:%d,pid:%d,encoding:%d,aspect_ratio:%d,audiochannels:%d.\n", index,
               static_cast<int>(type), static_cast<int>(pid), encoding, aspectRatio, audioChannels);
    BrowserDvbAPI::getInstance()->onComponentInfoChanged(index, type, pid, encoding, aspectRatio, audioChannels,
                                                         seventh, eighth, ninth, tenth);
    return 0;
}

int BrowserDVBService::onAllTerminalStoped(frame::MsgIds&, const frame::TransportInfo&) {
    BLOG_PLAIN(blog::kOrdinary, "onAllTerminalStoped.\n");
    BrowserDvbAPI::getInstance()->onAllTerminalStoped();
    return 0;
}

int BrowserDVBService::onPtsNotify(frame::MsgIds&, const frame::TransportInfo&, unsigned long long first,
                                   unsigned long long second) {
    BLOG_TAGGED(blog::kOrdinary, "onPtsNotify Called\n");
    BrowserDvbAPI::getInstance()->onPtsNotify(first, second);
    return 0;
}

// A late answer finds nobody waiting and only replaces the two values.
int BrowserDVBService::onSetAudioSourceFinished(frame::MsgIds&, const frame::TransportInfo&, unsigned int session,
                                                int result) {
    BLOG_TAGGED(blog::kOrdinary, "set audio source finished:%d,%d.\n", static_cast<int>(session), result);
    const locks::Lock lock(audioSourceLock);
    audioSourceFinishedSession = session;
    audioSourceResult = result;
    audioSourceCondition.notify_all();
    return 0;
}

int BrowserDVBService::onOSDStateChanged(frame::MsgIds&, const frame::TransportInfo&, unsigned int layerID,
                                         unsigned int state) {
    BLOG_TAGGED(blog::kOrdinary, "layerID:%d, state:%d\n", static_cast<int>(layerID), static_cast<int>(state));
    BrowserDvbAPI::getInstance()->onOSDStateChanged(layerID, state);
    return 0;
}

int BrowserDVBService::onDrmResultReply(frame::MsgIds&, const frame::TransportInfo&, unsigned long long session_id,
                                        unsigned char result_code, const std::string& message, unsigned short slot) {
    BLOG_TAGGED(blog::kOrdinary, "session_id:%llu, result_code:%u, slot id:%u\n", session_id,
                static_cast<unsigned int>(result_code), static_cast<unsigned int>(slot));
    BrowserDvbAPI::getInstance()->onDrmResultReply(session_id, result_code, message, slot);
    return 0;
}

int BrowserDVBService::onCaDrmConnected(frame::MsgIds&, const frame::TransportInfo&, unsigned long long session,
                                        unsigned short slot, unsigned short result) {
    BLOG_TAGGED(blog::kOrdinary, "session:%llu, slot id:%u, result code:%u\n", session, static_cast<unsigned int>(slot),
                static_cast<unsigned int>(result));
    BrowserDvbAPI::getInstance()->onCaDrmConnected(session, slot, result);
    return 0;
}

int BrowserDVBService::onCaDrmDisonnected(frame::MsgIds&, const frame::TransportInfo&, unsigned short slot,
                                          unsigned short result) {
    BLOG_TAGGED(blog::kOrdinary, "slot id:%u, result code:%u\n", static_cast<unsigned int>(slot),
                static_cast<unsigned int>(result));
    BrowserDvbAPI::getInstance()->onCaDrmDisonnected(slot, result);
    return 0;
}

int BrowserDVBService::onCaDrmSystemStatusChanged(frame::MsgIds&, const frame::TransportInfo&, unsigned short slot,
                                                  unsigned short status) {
    BLOG_TAGGED(blog::kOrdinary, "slot id:%u, status:%u\n", static_cast<unsigned int>(slot),
                static_cast<unsigned int>(status));
    BrowserDvbAPI::getInstance()->onCaDrmSystemStatusChanged(slot, status);
    return 0;
}

int BrowserDVBService::onDATagsServicePmtDataChange(frame::MsgIds&, const frame::TransportInfo&, unsigned short pmtOnid,
                                                    unsigned short pmtTsid, unsigned short pmtSid, int update,
                                                    const std::string& section) {
    BLOG_PLAIN(blog::kOrdinary, "onid:%d, tsid:%d, sid:%d, update:%d,section len %d.\n", pmtOnid, pmtTsid, pmtSid,
               update, lengthOf(section));
    BrowserDvbAPI::getInstance()->onDATagsServicePmtSectionUpdated(pmtOnid, pmtTsid, pmtSid, update, section);
    return 0;
}

}  // namespace velmora::dvbservice
