// BrowserAITCatcher: files AIT sections by channel, hands on what is new, and replays a channel's sections on request.
// The library itself never feeds it: whoever embeds the browser reports the channel with updateCurrentChannelInfo() and
// hands over the sections with updateAIT(), as they arrive at a DVBServiceListener.
// Of the browser-facing headers this one alone needs Boost (boost/shared_ptr.hpp).
// Threads: any; replays run on a thread of their own each.
// Blocks:  updateAIT() while another delivery's client call runs.
// Locks:   mutex serialises deliveries and is held across the client's call; stateLock guards the stored sections and
//          the keys and is held across no call out. Never both.
// Fails:   as each operation says; std::invalid_argument for a channel key that is not made of numbers.
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

/// A channel as it was reported: a leading value, which is only stored, then the channel's triplet.
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
    /// The one catcher of the process. Destroyed at process exit, unless a thread is inside of one of its operations.
    /// Operations that a thread begins when it is destroyed do nothing: -1, 0 for a replay.
    static BrowserAITCatcher* getInstance();

    /// Says which channel the AIT sections that follow belong to. 0. Nothing stored is dropped.
    int updateCurrentChannelInfo(std::uint16_t first, std::uint16_t onId, std::uint16_t tsId, std::uint16_t sId);
    /// Files one whole AIT section (TS 102 809, clause 5.3.4) under the current channel and delivers it to the AIT
    /// client when it is new. 0, also for a repetition; -1 for fewer than 8 bytes.
    int updateAIT(std::string section);

    /// "onid:tsid:sid" in decimal: the key of a channel. Unlike the CCID it has no prefix; the two are never compared.
    std::string convertToCCId(std::uint16_t onId, std::uint16_t tsId, std::uint16_t sId);
    /// Starts a replay of the channel's sections; 1.
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
    bool store(const std::string& ccid, const std::vector<std::uint8_t>& section);

    boost::shared_ptr<ChannelInfo> currentChannel;                     // guarded by stateLock
    std::map<std::string, boost::shared_ptr<AITStorage>> aitStorages;  // guarded by stateLock, contents included
    std::string currentCCId;                                           // guarded by stateLock
    std::string requestedCCId;                                         // guarded by stateLock
    pthread_mutex_t mutex;
    std::mutex stateLock;
    const std::shared_ptr<lo::browserdvbservice::Occupancy> occupancy;  // replays are workers
};

}  // namespace velmora::dvbservice
