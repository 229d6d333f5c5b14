// PresenceWatch: looks from time to time whether the DTV service is there. The library has no such question; an
// operation that changes nothing, the end of reports about an on-screen display layer that nobody follows, tells by its
// result.
// Threads: construction and destruction on one; it looks on a thread of its own.
// Blocks:  the destruction, until a running look is over; a look only sends.
// Locks:   `mutex` guards whether it ends; not held during a look.
// Fails:   a service that ends and starts again between two looks is not noticed; its first PMT tells of it.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include "dvb_api_interface.h"
#include "locks/lock.h"

namespace tvbrowser {

class PresenceWatch {
public:
    /// After each look, on the watch's thread.
    using Tell = std::function<void(bool isThere)>;

    PresenceWatch(velmora::dtv::DvbAPIInterface& newApi, Tell newTell);
    PresenceWatch(const PresenceWatch&) = delete;
    PresenceWatch& operator=(const PresenceWatch&) = delete;
    ~PresenceWatch();

private:
    void run();

    velmora::dtv::DvbAPIInterface& api;
    const Tell tell;
    std::mutex mutex;
    std::condition_variable change;
    bool ends GUARDED_BY(mutex) = false;
    std::thread thread;
};

}  // namespace tvbrowser
