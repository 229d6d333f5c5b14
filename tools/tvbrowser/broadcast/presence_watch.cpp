// Looks for the DTV service.
#include "presence_watch.h"

#include <chrono>
#include <utility>

namespace tvbrowser {

namespace {

constexpr std::chrono::milliseconds kWhileThere{500};
constexpr std::chrono::milliseconds kWhileGone{50};
constexpr std::uint32_t kUnusualLayer = 0xFFFFFFFF;

}  // namespace

PresenceWatch::PresenceWatch(velmora::dtv::DvbAPIInterface& newApi, Tell newTell)
    : api(newApi), tell(std::move(newTell)), thread([this] { run(); }) {}

PresenceWatch::~PresenceWatch() {
    {
        const locks::Lock lock(mutex);
        ends = true;
    }
    change.notify_one();
    thread.join();
}

void PresenceWatch::run() {
    locks::Lock lock(mutex);
    while (!ends) {
        lock.unlock();
        const bool isThere = api.stopOSDDetection(kUnusualLayer) >= 0;
        tell(isThere);
        lock.lock();
        change.wait_for(lock.forWaiting(), isThere ? kWhileThere : kWhileGone,
                        [this]() REQUIRES(mutex) { return ends; });
    }
}

}  // namespace tvbrowser
