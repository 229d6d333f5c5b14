// BrowserDVBService: the one object of the browser's process that communicates with the DTV service. Sends every
// command, receives every event, and keeps the current channel, the section filters and the section-data channel.
// Threads: commands and queries from any; the on… handlers on the transport thread; sections on the delivery thread.
// Blocks:  startSection(), stopSection() up to about ten seconds; setAudioSourceSync() until the service answers; the
//          first getInstance() while the object is created. Everything else: never.
// Locks:   registryLock, handshakeLock, audioSourceLock; the members that each guards are marked. No two are held
//          together, and none during a call of a listener or client. Only audioSourceLock is held during a send.
// Fails:   as each operation says. Creation throws boost::thread_resource_error or std::system_error when a mutex
//          cannot be created.
//
// The implementation is split by role: lifecycle (this name), _commands, _events, _channel, _filters, _handshake,
// _sections.
#pragma once

#include <atomic>
#include <boost/shared_ptr.hpp>
#include <boost/thread/mutex.hpp>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <type_traits>
#include <unordered_set>
#include <utility>
#include <vector>

#include "adapter.h"
#include "dvb_section_interface.h"
#include "filter_parameter.h"
#include "filter_table.h"
#include "locks/lock.h"
#include "occupancy.h"
#include "snapshot_text.h"
#include "velmora/msgqueue/ipc_message_queue.h"

namespace velmora::dvbservice {

using lo::browserdvbservice::Occupancy;

class BrowserDVBService : public lo::browserdvbservice::Adapter {
public:
    /// The one object. The first call creates it, connects it and requests the current channel. Never null.
    static BrowserDVBService* getInstance();

    /// Calls `operation` with the one object, which is not destroyed during the call, and returns its result. A thread
    /// that still runs during process exit may come after the object's destruction: the result is then -1, or an empty
    /// value.
    template <typename Operation>
    static auto visit(Operation operation) {
        using Result = decltype(operation(std::declval<BrowserDVBService&>()));
        const Occupancy::Stay stay(*occupancyOfInstance(), Occupancy::As::caller);
        if (stay) {
            return operation(*getInstance());
        }
        if constexpr (std::is_same_v<Result, int>) {
            return -1;
        } else {
            return Result();
        }
    }

    explicit BrowserDVBService(std::shared_ptr<Occupancy> newOccupancy = std::make_shared<Occupancy>());
    ~BrowserDVBService() override;
    BrowserDVBService(const BrowserDVBService&) = delete;
    BrowserDVBService& operator=(const BrowserDVBService&) = delete;

    /// The delivery thread calls this on every pass. Always true: a stop condition would go here.
    bool keepRunning();
    /// Tells the DTV service the names of the browser's IPC channels.
    void updateIPCChannelNames();

    // Commands. An int result is the send's result: 0, or negative when nothing was sent.
    void tuneToService(int idType, int onid, int tsid, int sid, int flags);
    void tuneToService(const std::string& dsd, int sid, int flags);
    void tuneToComponent(int first, int second, int third);
    void selectComponent(int type);
    void unselectComponent(int type);
    void setAudioSource(unsigned int session, std::string source);
    /// Sends the request, waits for the next report of an audio-source change, and returns the reported result.
    int setAudioSourceSync(const std::string& source);
    void triggerAitRestart();
    void notifyMwhbStart();
    /// Returns 0 always.
    int sendApplicationStartStatus(lo::browserdvbservice::ApplicationStartStatus status);
    void TriggerServiceInfoAcquire();
    void vbStartDtvInfoRequest();
    int mountDsmcc(unsigned int request, unsigned short onid, unsigned short tsid, unsigned short sid,
                   short componentTag);
    /// True when the request was sent.
    bool addStreamEventListener(unsigned int request, unsigned short onid, unsigned short tsid, unsigned short sid,
                                short componentTag, std::string objectPath, std::string eventName);
    bool removeStreamEventListener(unsigned int request, unsigned short onid, unsigned short tsid, unsigned short sid,
                                   short componentTag, std::string objectPath, std::string eventName);
    int sendPtsRequest(unsigned int request);
    int startTemiTimelineRequest(unsigned int first, unsigned int second, unsigned int third);
    int stopTemiTimelineRequest();
    int startOSDDetection(unsigned int layer);
    int stopOSDDetection(unsigned int layer);
    int sendDrmMessage(unsigned long long session, unsigned short caSystemId, unsigned short second,
                       std::string firstText, std::string secondText);
    int connectCa(unsigned long long session);
    int disconnectCa(unsigned short slot);
    int sendOpAppInstallStatus(int type, int status);

    // Current channel.
    /// Reads "onid:tsid:sid"; parts that cannot be read become unknown (-1).
    void updateCurrentChannelInfo(const std::string& info);
    int getCurrentChannelInfo(int& currentOnid, int& currentTsid, int& currentSid);
    std::string getCurrentCCID();
    std::string getCurrentDsd();

    // Filter records and the registry of their clients.
    int saveFilter(boost::shared_ptr<FilterParameter> filter) EXCLUDES(registryLock);
    void removeFilter(boost::shared_ptr<FilterParameter> filter) EXCLUDES(registryLock);
    /// The first saved record with that name, or an empty pointer.
    boost::shared_ptr<FilterParameter> findFilterParameterBySessionName(const std::string& sessionName)
        EXCLUDES(registryLock);
    bool registerClient(dtv::SectionFilterClient* client) EXCLUDES(registryLock);
    bool isRegistered(dtv::SectionFilterClient* client) EXCLUDES(registryLock);
    /// False when the client still owns a filter, or is not registered.
    bool unRegisterClient(dtv::SectionFilterClient* client) EXCLUDES(registryLock);
    std::string generateSessionName();

    // Filter requests.
    /// 0 opened; 1 refused or not confirmed in time: the record and the client then stay until stopSection().
    int startSection(dtv::SectionFilterClient* client, const std::string& sessionName, unsigned int pid,
                     const unsigned char* mask, const unsigned char* maskBits, int length);
    /// 0 closed; 1 refused or not confirmed in time; -1 unknown session.
    int stopSection(dtv::SectionFilterClient* client, const std::string& sessionName);
    int startPMTRequest(dtv::SectionFilterClient* client, const std::string& sessionName, unsigned int serviceId);
    int stopPMTRequest(dtv::SectionFilterClient* client, const std::string& sessionName);
    bool waitForStartSectionResult(unsigned int pid, const std::string& sessionName);
    bool waitForStopSectionResult(const std::string& sessionName);

    // Section-data channel.
    /// Creates the queue and the delivery thread unless they exist. True when the queue exists.
    bool createIPCChannelForSectionData();
    /// The delivery thread; `service` is the BrowserDVBService.
    static void* thread_proc_section_data(void* service);

    // Events that the service object handles; the adapter ignores the others. All return 0.
    int onAitChannelInfoUpdated(frame::MsgIds&, const frame::TransportInfo&, short first, unsigned short aitOnid,
                                unsigned short aitTsid, unsigned short aitSid) override;
    int onAitParsingStateChanged(frame::MsgIds&, const frame::TransportInfo&, unsigned short state) override;
    int onAitSectionAvailable(frame::MsgIds&, const frame::TransportInfo&, const std::string& section) override;
    int onBrowserOpenFilterConf(frame::MsgIds&, const frame::TransportInfo&, unsigned int pid,
                                const std::string& sessionName, short result) override;
    int onBrowserOCloseFilterConf(frame::MsgIds&, const frame::TransportInfo&, const std::string& sessionName,
                                  short result) override;
    int onFilterOpened(frame::MsgIds&, const frame::TransportInfo&, const std::string& sessionName,
                       const std::string& dataSlot) override;
    int onFilterClosed(frame::MsgIds&, const frame::TransportInfo&, const std::string& sessionName) override;
    int onFilterSectionDataArrived(frame::MsgIds&, const frame::TransportInfo&, const std::string& sessionName,
                                   const std::string& data, unsigned int length) override;
    int onServiceChanged(frame::MsgIds&, const frame::TransportInfo&, const std::string& state,
                         const std::string& service) override;
    int onAcquireDtvServiceInfo(frame::MsgIds&, const frame::TransportInfo&, const std::string& channelInfo) override;
    int onHbbtvEngineStatusChanged(frame::MsgIds&, const frame::TransportInfo&, int status) override;
    int onPmtDataChange(frame::MsgIds&, const frame::TransportInfo&, unsigned short pmtOnid, unsigned short pmtTsid,
                        unsigned short pmtSid, int update, const std::string& section) override;
    int onEitDataChange(frame::MsgIds&, const frame::TransportInfo&, int update, const std::string& section) override;
    int onTimelineInfoChange(frame::MsgIds&, const frame::TransportInfo&, unsigned char first, unsigned char second,
                             unsigned char third, unsigned int timescale, unsigned long long mediaTimestamp,
                             unsigned long long ptsValue) override;
    int onSelectedComponentChange(frame::MsgIds&, const frame::TransportInfo&, unsigned int selectedIndex,
                                  unsigned int type, unsigned short pid, unsigned short ofOnid, unsigned short ofTsid,
                                  unsigned short ofSid) override;
    int onComponentInfoChange(frame::MsgIds&, const frame::TransportInfo&, unsigned short index, unsigned int type,
                              unsigned int pid, unsigned short encoding, unsigned short aspectRatio,
                              unsigned short audioChannels, unsigned short seventh, unsigned short eighth,
                              unsigned int ninth, unsigned short tenth) override;
    int onAllTerminalStoped(frame::MsgIds&, const frame::TransportInfo&) override;
    int onPtsNotify(frame::MsgIds&, const frame::TransportInfo&, unsigned long long first,
                    unsigned long long second) override;
    int onSetAudioSourceFinished(frame::MsgIds&, const frame::TransportInfo&, unsigned int session,
                                 int result) override;
    int onOSDStateChanged(frame::MsgIds&, const frame::TransportInfo&, unsigned int layerID,
                          unsigned int state) override;
    int onDrmResultReply(frame::MsgIds&, const frame::TransportInfo&, unsigned long long session_id,
                         unsigned char result_code, const std::string& message, unsigned short slot) override;
    int onCaDrmConnected(frame::MsgIds&, const frame::TransportInfo&, unsigned long long session, unsigned short slot,
                         unsigned short result) override;
    int onCaDrmDisonnected(frame::MsgIds&, const frame::TransportInfo&, unsigned short slot,
                           unsigned short result) override;
    int onCaDrmSystemStatusChanged(frame::MsgIds&, const frame::TransportInfo&, unsigned short slot,
                                   unsigned short status) override;
    int onDATagsServicePmtDataChange(frame::MsgIds&, const frame::TransportInfo&, unsigned short pmtOnid,
                                     unsigned short pmtTsid, unsigned short pmtSid, int update,
                                     const std::string& section) override;

private:
    friend struct BrowserDVBServiceTestAccess;

    /// One confirmation that no wait has taken yet.
    struct _FilterResult {
        int type;  // kOpenConfirmation or kCloseConfirmation
        std::string sessionName;
        unsigned int pid;
        short result;  // 0 for success
    };
    static constexpr int kOpenConfirmation = 1;
    static constexpr int kCloseConfirmation = 2;
    static constexpr unsigned int kNoPid = 0xFFFF;

    /// Counts the threads inside the one object. Threads may check it after the object was destroyed, so it is never
    /// destroyed.
    static const std::shared_ptr<Occupancy>& occupancyOfInstance();
    static void destroyUnlessOccupied(BrowserDVBService* service);
    template <typename Send>
    void sendGuarded(const char* function, Send send);
    template <typename Send>
    int sendUnguarded(Send send);
    template <typename Matches>
    bool waitForResult(const char* function, const std::string& sessionName, Matches matches) EXCLUDES(handshakeLock);
    void releaseFilter(const char* function, dtv::SectionFilterClient* client,
                       const boost::shared_ptr<FilterParameter>& filter);
    static void deliverSections(BrowserDVBService* service, Occupancy& occupancy, msgqueue::IPCMessageQueue& queue,
                                msgqueue::SectionDataIPCMessage& message);
    void deliverSection(const msgqueue::SectionDataIPCMessage& message);
    /// Whom a section is for. Each may be null, the client if it is not registered.
    struct Receiver {
        const FilterParameter* filter = nullptr;
        dtv::SectionFilterClient* client = nullptr;
    };
    /// For the delivery thread only: the filter then exists until the next call, whether it is removed or not.
    Receiver findReceiver(const std::string& sessionName) EXCLUDES(registryLock);

    std::vector<dtv::SectionFilterClient*> clients GUARDED_BY(registryLock);
    FilterTable filters GUARDED_BY(registryLock);
    std::unordered_set<const dtv::SectionFilterClient*> registered GUARDED_BY(registryLock);  // an index of clients
    boost::mutex registryLock;
    std::atomic<msgqueue::IPCMessageQueue*> sectionDataQueue{nullptr};  // set once, never deleted

    // The current channel. The transport thread writes it and browser threads read it, one value at a time, so a reader
    // may see parts of two channels.
    std::atomic<int> onid{-1};
    std::atomic<int> tsid{-1};
    std::atomic<int> sid{-1};
    std::atomic<int> pmtServiceId{-1};  // service of the last successful tune by triplet
    SnapshotText dsd;                   // descriptor of the last successful tune by descriptor

    SnapshotText sectionDataChannelName;
    SnapshotText secondChannelName;  // sent to the DTV service; this library never sets it
    std::string sessionName;         // set by the constructor
    [[maybe_unused]] int filterMachinery = 0;

    std::mutex handshakeLock;
    std::condition_variable handshakeCondition;
    std::deque<_FilterResult> filterResults GUARDED_BY(handshakeLock);

    int audioSourceResult GUARDED_BY(audioSourceLock) = 0;
    unsigned int audioSourceSession GUARDED_BY(audioSourceLock) = 0;          // counts the requests
    unsigned int audioSourceFinishedSession GUARDED_BY(audioSourceLock) = 0;  // session of the last report
    std::condition_variable audioSourceCondition;
    std::mutex audioSourceLock;

    const std::shared_ptr<Occupancy> occupancy;  // nobody joins the threads that are inside at process exit
};

}  // namespace velmora::dvbservice
