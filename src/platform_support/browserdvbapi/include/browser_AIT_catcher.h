// BrowserAITCatcher: stores AIT sections by channel, delivers new ones to the AIT client, and replays a channel's
// sections on request.
// The library itself never feeds it. The program that embeds the browser reports the channel with
// updateCurrentChannelInfo() and passes the sections that its DVBServiceListener receives to updateAIT(). These two and
// getInstance() are exported; the browser cannot link any other operation of the class.
// This is the only browser-facing header that needs Boost (boost/shared_ptr.hpp).
// Threads: any; each replay runs on its own thread.
// Blocks:  updateAIT() while another delivery's client call runs.
// Locks:   mutex serialises deliveries and is held during the client's call; stateLock guards the stored sections and
//          the keys and is not held during any call out. Never both.
// Fails:   as each operation says; std::invalid_argument for a channel key that is not made of numbers, and
//          std::out_of_range for a number that no int holds.
#pragma once

#include <pthread.h>

#include <atomic>
#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "idtv_unknown.h"

namespace lo::browserdvbservice {
class Occupancy;
}

namespace velmora::dvbservice {

class AITStorage;

/// A reported channel: a leading value, which is only stored, then the channel's triplet.
struct ChannelInfo {
    std::uint16_t first;
    std::uint16_t onId;
    std::uint16_t tsId;
    std::uint16_t sId;
};

class DTV_BROWSER_API BrowserAITCatcher {
public:
    BrowserAITCatcher();
    ~BrowserAITCatcher();
    BrowserAITCatcher(const BrowserAITCatcher&) = delete;
    BrowserAITCatcher& operator=(const BrowserAITCatcher&) = delete;

    static BrowserAITCatcher* GetInstance();
    /// The one catcher of the process. Process exit destroys it, unless a thread is inside one of its operations.
    /// After its destruction updateCurrentChannelInfo() and updateAIT() only return -1, and getCurrentChannelAIT() only
    /// returns 0.
    static BrowserAITCatcher* getInstance();

    /// Sets the channel of the AIT sections that follow. Stored sections are kept. Returns 0.
    int updateCurrentChannelInfo(std::uint16_t first, std::uint16_t onId, std::uint16_t tsId, std::uint16_t sId);
    /// Stores one whole AIT section (TS 102 809, clause 5.3.4) under the current channel and delivers it to the AIT
    /// client when it is new. 0, also for a repetition; -1 for fewer than 8 bytes.
    int updateAIT(std::string section);

    /// The key of a channel: "onid:tsid:sid" in decimal. Unlike the CCID it has no prefix; never compare the two.
    std::string convertToCCId(std::uint16_t onId, std::uint16_t tsId, std::uint16_t sId);
    /// Starts a replay of the channel's sections. Returns 1.
    int getCurrentChannelAIT(std::uint16_t onId, std::uint16_t tsId, std::uint16_t sId);
    void thread_proc_AITData();
    static void* AITDataHandler(void* catcher);
    int getAITDataAsyc(std::string ccid);
    void sendAITData(std::string ccid, const std::vector<std::uint8_t>& section);

private:
    friend struct BrowserAITCatcherTestAccess;

    struct One;
    static std::atomic<const One*> theOne;

    static void destroyUnlessOccupied(BrowserAITCatcher* catcher);
    lo::browserdvbservice::Occupancy& occupancyHere() const;
    bool createWorker(const pthread_attr_t* attributes);
    bool store(const std::string& ccid, const std::vector<std::uint8_t>& section) DTV_REQUIRES(stateLock);

    boost::shared_ptr<ChannelInfo> currentChannel DTV_GUARDED_BY(stateLock);
    std::map<std::string, boost::shared_ptr<AITStorage>> aitStorages DTV_GUARDED_BY(stateLock);  // contents included
    std::string currentCCId DTV_GUARDED_BY(stateLock);
    std::string requestedCCId DTV_GUARDED_BY(stateLock);
    pthread_mutex_t mutex;
    std::mutex stateLock;
    const std::shared_ptr<lo::browserdvbservice::Occupancy> occupancy;  // a replay is a worker
};

}  // namespace velmora::dvbservice
