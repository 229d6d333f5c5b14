// BrowserDvbAPI: implements "DvbAPIInterface". Forwards commands and queries to the service object, and passes each
// event to all of the browser's listeners.
// Threads: commands and the listener registry from any; the on… entry points on the transport thread.
// Blocks:  setAudioSource() until the DTV service has answered. Everything else: never.
// Locks:   listenersMutex guards listeners; it is not held while a listener is called.
// Fails:   returns the service object's results unchanged; an exception of a listener ends the delivery of that event.
#pragma once

#include <atomic>
#include <boost/thread/recursive_mutex.hpp>
#include <memory>
#include <vector>

#include "dvb_api_interface.h"
#include "locks/lock.h"

namespace velmora::dvbservice {

class DTV_BROWSER_API BrowserDvbAPI : public dtv::DvbAPIInterface {
public:
    BrowserDvbAPI();
    ~BrowserDvbAPI() override;

    static BrowserDvbAPI* GetInstance();
    static BrowserDvbAPI* getInstance();

    void AddRef() override;
    void Release() override;
    std::string name() override;
    int getCurrentChannelInfo(int& onid, int& tsid, int& sid) override;
    std::string getCurrentCCID() override;
    std::string getCurrentDsd() override;
    int sendApplicationStartedFailed() override;
    int sendApplicationStartedSucceeded() override;
    void triggerAitRestart() override;
    void tuneToService(int idType, int onid, int tsid, int sid, int flags) override;
    void tuneToService(const std::string& dsd, int sid, int flags) override;
    void tuneToComponent(int first, int second, int third) override;
    void selectComponent(int type) override;
    void unselectComponent(int type) override;
    int setAudioSource(std::string source) override;
    void addListener(std::shared_ptr<dtv::DVBServiceListener> listener) override;
    void removeListener(std::shared_ptr<dtv::DVBServiceListener> listener) override;
    void notifyMwhbStart() override;
    int sendPtsRequest(std::uint32_t request) override;
    int startTemiTimelineRequest(std::uint32_t first, std::uint32_t second, std::uint32_t third) override;
    int stopTemiTimelineRequest() override;
    int startOSDDetection(std::uint32_t layer) override;
    int stopOSDDetection(std::uint32_t layer) override;
    int sendDrmMessage(std::uint64_t sessionId, std::uint16_t caSystemId, std::uint16_t second,
                       const std::string& firstText, const std::string& secondText) override;
    int connectCa(std::uint64_t session) override;
    int disconnectCa(std::uint16_t slot) override;
    int sendOpAppInstallStatus(int type, int status) override;
    void vbStartDtvInfoRequest() override;

    // Event entry points, called by the service object; each calls the listener operation of its name.
    void OnChannelChanged(bool started, std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid);
    /// The leading value is ignored on purpose: listeners get the channel with the next section.
    void onAITChannelInfoChanged(std::int16_t first, std::uint16_t onId, std::uint16_t tsId, std::uint16_t sId);
    void onSelectedComponentChanged(std::uint32_t selectedIndex, std::uint32_t type, std::uint16_t pid,
                                    std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid);
    void onComponentInfoChanged(std::uint16_t index, std::uint32_t type, std::uint32_t pid, std::uint16_t encoding,
                                std::uint16_t aspectRatio, std::uint16_t audioChannels, std::uint16_t seventh,
                                std::uint16_t eighth, std::uint32_t ninth, std::uint16_t tenth);
    void onAITSectionUpdated(const std::string& section);
    void onHbbTVEngineStatusChanged(dtv::HbbTVEngineStatus status);
    void onPMTSectionUpdated(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid, int update,
                             const std::string& section);
    void onEITSectionUpdated(int update, const std::string& section);
    void onTimelineInfoDataChange(std::uint8_t first, std::uint8_t second, std::uint8_t third, std::uint32_t timescale,
                                  std::uint64_t mediaTimestamp, std::uint64_t ptsValue);
    void onAllTerminalStoped();
    void onPtsNotify(std::uint64_t first, std::uint64_t second);
    void onOSDStateChanged(std::uint32_t layerID, std::uint32_t state);
    void onDrmResultReply(std::uint64_t session_id, std::uint8_t result_code, const std::string& message,
                          std::uint16_t slot);
    void onCaDrmConnected(std::uint64_t session, std::uint16_t slot, std::uint16_t result);
    void onCaDrmDisonnected(std::uint16_t slot, std::uint16_t result);
    void onCaDrmSystemStatusChanged(std::uint16_t slot, std::uint16_t status);
    void onDATagsServicePmtSectionUpdated(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid, int update,
                                          const std::string& section);

private:
    friend struct BrowserDvbAPITestAccess;

    using Listeners = std::vector<std::shared_ptr<dtv::DVBServiceListener>>;

    std::shared_ptr<const Listeners> listenersNow();
    template <typename Call>
    void forEachListener(Call call);

    /// In order of registration, no pointer twice. Replaced by each change, so that an event keeps those that it found
    /// without a copy.
    std::shared_ptr<const Listeners> listeners GUARDED_BY(listenersMutex) = std::make_shared<const Listeners>();
    boost::recursive_mutex listenersMutex;

    // The channel of the AIT sections that follow. Event entry points write and read it without a lock, one value at a
    // time, so a listener may see parts of two triplets.
    std::atomic<std::int32_t> aitOnId{0};
    std::atomic<std::int32_t> aitTsId{0};
    std::atomic<std::int32_t> aitSId{0};
};

}  // namespace velmora::dvbservice
