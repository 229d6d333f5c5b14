// The AIT catcher: storage, delivery and replays.
#include "browser_AIT_catcher.h"

#include <chrono>
#include <locale>
#include <sstream>

#include "browser_AIT_storage.h"
#include "browser_log.h"
#include "cut_to_16_bits.h"
#include "dvbaitsection_apis.h"
#include "locks/posix_lock.h"
#include "occupancy.h"
#include "ovx/osal_thread.h"
#include "singleton.h"

namespace velmora::dvbservice {

using lo::browserdvbservice::Occupancy;

namespace {

constexpr const char* kBlogTag = kTagBrowser;
constexpr std::size_t kShortestSection = 8;
constexpr std::size_t kKeyPieces = 3;
constexpr std::chrono::seconds kLongestReplay{1};

/// The pieces between the colons, empty ones included. No empty piece follows a final colon.
std::vector<std::string> splitKey(const std::string& ccid) {
    std::vector<std::string> pieces;
    std::istringstream text(ccid);
    for (std::string piece; std::getline(text, piece, ':');) {
        pieces.push_back(piece);
    }
    return pieces;
}

}  // namespace

/// The process's catcher and the count of the threads inside it. Never destroyed: threads may check it after the
/// catcher was destroyed.
struct BrowserAITCatcher::One {
    const BrowserAITCatcher* catcher;
    std::shared_ptr<Occupancy> occupancy;
};

std::atomic<const BrowserAITCatcher::One*> BrowserAITCatcher::theOne{nullptr};

BrowserAITCatcher::BrowserAITCatcher() : occupancy(std::make_shared<Occupancy>()) {
    pthread_mutex_init(&mutex, nullptr);
}

/// Nobody joins the replays, so wait here until they end.
BrowserAITCatcher::~BrowserAITCatcher() {
    while (!occupancy->close(kLongestReplay)) {
    }
    pthread_mutex_destroy(&mutex);
}

/// Runs at process exit. A thread inside the catcher prevents its destruction, but does not delay the exit.
void BrowserAITCatcher::destroyUnlessOccupied(BrowserAITCatcher* catcher) {
    if (catcher->occupancy->close(kLongestReplay)) {
        delete catcher;
    }
}

Occupancy& BrowserAITCatcher::occupancyHere() const {
    const One* const one = theOne.load(std::memory_order_acquire);
    return one != nullptr && one->catcher == this ? *one->occupancy : *occupancy;
}

BrowserAITCatcher* BrowserAITCatcher::GetInstance() {
    BrowserAITCatcher* const catcher = base::Singleton<BrowserAITCatcher>::get();
    static const One* const one = new One{catcher, catcher->occupancy};
    theOne.store(one, std::memory_order_release);
    return catcher;
}

BrowserAITCatcher* BrowserAITCatcher::getInstance() {
    static BrowserAITCatcher* const catcher = [] {
        static const boost::shared_ptr<BrowserAITCatcher> instance(GetInstance(), &destroyUnlessOccupied);
        return instance.get();
    }();
    return catcher;
}

std::string BrowserAITCatcher::convertToCCId(std::uint16_t onId, std::uint16_t tsId, std::uint16_t sId) {
    std::ostringstream key;
    key.imbue(std::locale::classic());  // the key is parsed again later, so it must have no digit grouping
    key << onId << ":" << tsId << ":" << sId;
    return key.str();
}

int BrowserAITCatcher::updateCurrentChannelInfo(std::uint16_t first, std::uint16_t onId, std::uint16_t tsId,
                                                std::uint16_t sId) {
    const Occupancy::Stay stay(occupancyHere(), Occupancy::As::caller);
    if (!stay) {
        return -1;
    }
    BLOG_TAGGED(blog::kOrdinary, "Broadcast Channel switch In.\n");
    const boost::shared_ptr<ChannelInfo> reported(new ChannelInfo{first, onId, tsId, sId});
    const locks::Lock lock(stateLock);
    // Compared by identity, on purpose: every report counts as a channel change, even for the same channel.
    if (reported != currentChannel) {
        BLOG_TAGGED(blog::kOrdinary, "Change to Different Channel.\n");
        currentChannel = reported;
    } else {
        BLOG_TAGGED(blog::kOrdinary, "Change to Same Channel\n");
    }
    currentCCId = convertToCCId(onId, tsId, sId);
    return 0;
}

/// Stores a section. True when it has to be delivered: always for the first section of a channel, stored or not.
bool BrowserAITCatcher::store(const std::string& ccid, const std::vector<std::uint8_t>& section) {
    const auto found = aitStorages.find(ccid);
    if (found == aitStorages.end()) {
        aitStorages.emplace(ccid, boost::shared_ptr<AITStorage>(new AITStorage(section)));
        return true;
    }
    BLOG_TAGGED_AS(blog::kOrdinary, "updateAIT", "The AIT for this channel exist.\n");
    if (found->second->saveAITSection(section)) {
        return true;
    }
    BLOG_TAGGED_AS(blog::kOrdinary, "updateAIT", "No need to pass same AIT.\n");
    return false;
}

int BrowserAITCatcher::updateAIT(std::string section) {
    const Occupancy::Stay stay(occupancyHere(), Occupancy::As::caller);
    if (!stay) {
        return -1;
    }
    BLOG_TAGGED(blog::kOrdinary, "section length:%d.\n\n", static_cast<int>(section.size()));
    if (section.size() < kShortestSection) {
        BLOG_TAGGED(blog::kFailure, "Invalid AIT Section length %d\n", static_cast<int>(section.size()));
        return -1;
    }
    const std::vector<std::uint8_t> bytes(section.begin(), section.end());
    std::string ccid;
    {
        const locks::Lock lock(stateLock);
        ccid = currentCCId;
        if (!store(ccid, bytes)) {
            return 0;
        }
    }
    sendAITData(ccid, bytes);
    return 0;
}

int BrowserAITCatcher::getCurrentChannelAIT(std::uint16_t onId, std::uint16_t tsId, std::uint16_t sId) {
    const Occupancy::Stay stay(occupancyHere(), Occupancy::As::caller);
    if (!stay) {
        return 0;
    }
    {
        const locks::Lock lock(stateLock);
        requestedCCId = convertToCCId(onId, tsId, sId);
    }
    BLOG_TAGGED(blog::kOrdinary, "onId:%d,tsId:%d,sId:%d\n", onId, tsId, sId);
    thread_proc_AITData();
    return 1;
}

void BrowserAITCatcher::thread_proc_AITData() {
    pthread_attr_t attributes;
    _ovxOsalPOSIX_pthread_attr_init(&attributes);
    const pthread_attr_t* chosen = &attributes;
    if (pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED) != 0) {
        BLOG_TAGGED(blog::kFailure, "pthread_attr_setdetachstate() failed.\n\n");
        chosen = nullptr;
    }
    const bool created = createWorker(chosen);
    _ovxOsalPOSIX_pthread_attr_destroy(&attributes);
    if (!created) {
        BLOG_TAGGED(blog::kFailure, "pthread_create() failed.\n\n");
    }
}

bool BrowserAITCatcher::createWorker(const pthread_attr_t* attributes) {
    occupancy->reserve();
    pthread_t worker{};
    if (_ovxOsalPOSIX_pthread_create_line(&worker, attributes, &BrowserAITCatcher::AITDataHandler, this, __FILE__,
                                          __LINE__) == 0) {
        return true;
    }
    occupancy->giveBack();
    return false;
}

/// Reads the requested channel when the worker runs: two quick requests may both replay the later channel.
void* BrowserAITCatcher::AITDataHandler(void* catcher) {
    auto* const self = static_cast<BrowserAITCatcher*>(catcher);
    const std::shared_ptr<Occupancy> occupancy = self->occupancy;
    const Occupancy::Stay stay = occupancy->reserved();
    std::string ccid;
    {
        const locks::Lock lock(self->stateLock);
        ccid = self->requestedCCId;
    }
    self->getAITDataAsyc(ccid);
    return nullptr;
}

int BrowserAITCatcher::getAITDataAsyc(std::string ccid) {
    boost::shared_ptr<AITStorage> storage;
    int count = 0;
    {
        const locks::Lock lock(stateLock);
        const auto found = aitStorages.find(ccid);
        if (found != aitStorages.end()) {
            storage = found->second;
            count = storage->getAITSectionCount();
        }
    }
    if (!storage) {
        BLOG_TAGGED(blog::kFailure, "This Channel AIT is not stored.\n");
        return 1;
    }
    BLOG_TAGGED(blog::kOrdinary, "This channel has %d sections.\n", count);
    // Deliver every slot: an empty one as an empty vector, and the last one again for each number above 11.
    for (int index = 0; index < count; ++index) {
        std::vector<std::uint8_t> bytes;
        {
            const locks::Lock lock(stateLock);
            bytes = storage->getAITSection(index).data;
        }
        sendAITData(ccid, bytes);
    }
    return 1;
}

void BrowserAITCatcher::sendAITData(std::string ccid, const std::vector<std::uint8_t>& section) {
    const locks::PosixLock guard(mutex);
    DvbAITSectionAPI* const api = DvbAITSectionAPI::getInstance();
    if (api == nullptr) {
        BLOG_TAGGED(blog::kFailure, "sendAITData aitAPI is NULL \n");
        return;
    }
    const std::vector<std::string> pieces = splitKey(ccid);
    if (pieces.size() < kKeyPieces) {
        BLOG_TAGGED(blog::kFailure, "channelInfo.size() =%d  error!!!\n", static_cast<int>(pieces.size()));
        return;
    }
    const int onId = std::stoi(pieces[0]);
    const int tsId = std::stoi(pieces[1]);
    const int sId = std::stoi(pieces[2]);
    BLOG_TAGGED(blog::kOrdinary, "ccId:%s,onId:%d,tsId:%d,sId:%d\n", ccid.c_str(), onId, tsId, sId);
    api->notifyCurrentChannelAIT(cutTo16Bits(onId), cutTo16Bits(tsId), cutTo16Bits(sId), section);
}

}  // namespace velmora::dvbservice
