// The inside of SectionFilter: the session of a filter, and the client that passes sections to sessions. Include
// section_filter.h.
// Threads: any.
// Locks:   SectionSession::mutex, held while the receiver runs. The receiver may open and close other filters, whose
//          mutexes no other thread holds for long. SectionRouter::mutex, not held during any call out.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "dvb_helpers/changed_sections.h"
#include "dvb_section_interface.h"

namespace velmora::dtv::helpers {

/// Receives a whole section. The bytes are valid during the call.
using SectionReceiver = std::function<void(const unsigned char* section, unsigned int length)>;

enum class SectionDelivery {
    every,    ///< each section that the filter lets through
    changed,  ///< not the repetitions, see ChangedSections
    once,     ///< only the first, then the filter closes
};

class SectionSession;

/// The one client of all sessions of a process. Its address must stay valid for the life of the process, because nobody
/// can know when the delivery thread has made its last call for a closed filter. So it is never deleted, and calls for
/// closed sessions end here.
class SectionRouter final : public SectionFilterClient {
public:
    static SectionRouter& theOne() {
        static auto& router = *new SectionRouter;
        return router;
    }
    void add(const std::shared_ptr<SectionSession>& session);
    void remove(const std::string& name) {
        const std::lock_guard<std::mutex> lock(mutex);
        sessions.erase(name);
    }
    /// Null for a session that is closed.
    std::shared_ptr<SectionSession> find(const std::string& name) {
        const std::lock_guard<std::mutex> lock(mutex);
        const auto found = sessions.find(name);
        return found == sessions.end() ? nullptr : found->second;
    }
    void onSectionData(const std::string& sessionName, unsigned int pid, const unsigned char* data,
                       unsigned int length) override;

private:
    std::mutex mutex;
    std::map<std::string, std::shared_ptr<SectionSession>> sessions;  // guarded by mutex
};

/// One filter or PMT request.
class SectionSession {
public:
    enum class Request { filter, pmt };

    SectionSession(DVBSectionInterface& newFilters, Request newRequest, SectionReceiver newReceiver,
                   SectionDelivery newDelivery)
        : filters(newFilters),
          request(newRequest),
          delivery(newDelivery),
          sessionName(newFilters.generateSessionName()),
          receiver(std::move(newReceiver)) {}

    const std::string& name() const { return sessionName; }
    bool isClosed() const { return closed; }

    void deliver(const unsigned char* section, unsigned int length) {
        {
            const std::lock_guard<std::recursive_mutex> lock(mutex);
            if (ended || (delivery == SectionDelivery::changed && !changes.isNew(section, length))) {
                return;
            }
            ended = delivery == SectionDelivery::once;
            running = true;
            receiver(section, length);
            running = false;
            if (!ended) {
                return;
            }
        }
        close();
    }

    void close() {
        SectionReceiver last;  // its captures are destroyed on the closing thread, without the lock
        {
            const std::lock_guard<std::recursive_mutex> lock(mutex);
            ended = true;
            if (!running) {
                last.swap(receiver);
            }
        }
        if (closed.exchange(true)) {
            return;
        }
        SectionRouter::theOne().remove(sessionName);
        if (request == Request::pmt) {
            filters.stopPMTRequest(&SectionRouter::theOne(), sessionName);
        } else {
            filters.stopSection(&SectionRouter::theOne(), sessionName);
        }
    }

private:
    DVBSectionInterface& filters;
    const Request request;
    const SectionDelivery delivery;
    const std::string sessionName;
    std::atomic<bool> closed{false};
    std::recursive_mutex mutex;  // recursive, because a receiver may close its own filter
    SectionReceiver receiver;    // guarded by mutex, like the rest
    ChangedSections changes;
    bool ended = false;
    bool running = false;
};

inline void SectionRouter::add(const std::shared_ptr<SectionSession>& session) {
    const std::lock_guard<std::mutex> lock(mutex);
    sessions.emplace(session->name(), session);
}

inline void SectionRouter::onSectionData(const std::string& sessionName, unsigned int, const unsigned char* data,
                                         unsigned int length) {
    if (const std::shared_ptr<SectionSession> session = find(sessionName)) {
        session->deliver(data, length);
    }
}

}  // namespace velmora::dtv::helpers
