// The section-data channel: the DTV service writes sections to an IPC queue; the delivery thread reads them and passes
// each to the client of its filter.
#include <pthread.h>
#include <unistd.h>

#include <boost/interprocess/exceptions.hpp>
#include <memory>
#include <new>
#include <optional>

#include "browser_dvb_service.h"
#include "browser_log.h"
#include "locks/posix_lock.h"
#include "ovx/osal_thread.h"
#include "trace_scope.h"

namespace velmora::dvbservice {

using msgqueue::IPCMessageQueue;
using msgqueue::SectionDataIPCMessage;

namespace {

constexpr const char* kBlogTag = kTagService;
constexpr std::size_t kQueueMessageSize = 4500;
constexpr std::size_t kQueueMessages = 128;
constexpr useconds_t kPauseAfterReceiveError = 100000;

// For the start of the delivery thread. Its creator waits once on the condition, and any wake-up counts. The lock also
// serialises threads that try to create it at the same time.
pthread_mutex_t startLock = PTHREAD_MUTEX_INITIALIZER;
pthread_cond_t startCondition = PTHREAD_COND_INITIALIZER;

/// The thread's message and buffer. The message must not free the buffer, so the destructor takes the buffer back
/// first.
class SectionReceiver {
public:
    SectionReceiver()
        : message(new (std::nothrow) SectionDataIPCMessage),
          buffer(new (std::nothrow) std::uint8_t[SectionDataIPCMessage::kBufferSize]) {
        if (ready()) {
            message->data = buffer.get();
        }
    }
    ~SectionReceiver() {
        if (message) {
            message->data = nullptr;
        }
    }
    SectionReceiver(const SectionReceiver&) = delete;
    SectionReceiver& operator=(const SectionReceiver&) = delete;

    bool ready() const { return message && buffer; }

    std::unique_ptr<SectionDataIPCMessage> message;
    std::unique_ptr<std::uint8_t[]> buffer;
};

/// Queues are never destroyed. When the service object is gone, this keeps its queue reachable, so it is not a leak.
std::atomic<IPCMessageQueue*> orphanedQueue{nullptr};

}  // namespace

bool BrowserDVBService::createIPCChannelForSectionData() {
    TRACE_SCOPE();
    if (sectionDataQueue.load(std::memory_order_acquire) != nullptr) {
        return true;
    }
    {
        const locks::PosixLock guard(startLock);
        if (sectionDataQueue.load(std::memory_order_acquire) != nullptr) {
            return true;
        }
        const std::string name = "SECTION-" + sessionName;
        sectionDataChannelName.set(name);
        IPCMessageQueue* const queue = IPCMessageQueue::create(name, kQueueMessageSize, kQueueMessages);
        if (queue == nullptr) {
            BLOG_TAGGED(blog::kFailure, "Failed to create IPC message queue[%s] \n\n", name.c_str());
            return false;
        }
        sectionDataQueue.store(queue, std::memory_order_release);
        pthread_t thread{};
        _ovxOsalPOSIX_pthread_create_line(&thread, nullptr, &BrowserDVBService::thread_proc_section_data, this,
                                          __FILE__, __LINE__);
        BLOG_TAGGED(blog::kOrdinary, "Wait thread_proc_section_data create 0\n\n");
        pthread_cond_wait(&startCondition, &startLock);
    }
    BLOG_TAGGED(blog::kOrdinary, "thread_proc_section_data create OK 2\n\n");
    return true;
}

void* BrowserDVBService::thread_proc_section_data(void* arg) {
    auto* const service = static_cast<BrowserDVBService*>(arg);
    std::optional<SectionReceiver> receiver;
    std::shared_ptr<Occupancy> occupancy;
    IPCMessageQueue* queue = nullptr;
    {
        const locks::PosixLock guard(startLock);
        if (service == nullptr) {
            BLOG_TAGGED(blog::kFailure, "Invalid Thread data.\n");
            pthread_cond_signal(&startCondition);
            return nullptr;
        }
        receiver.emplace();
        if (!receiver->ready()) {
            BLOG_TAGGED(blog::kFailure, "Error Allocate memory: %p,%p\n", static_cast<void*>(receiver->message.get()),
                        static_cast<void*>(receiver->buffer.get()));
            receiver.reset();
            pthread_cond_signal(&startCondition);
            return nullptr;
        }
        // Copied here: after the signal the process may end and destroy the object.
        occupancy = service->occupancy;
        queue = service->sectionDataQueue.load(std::memory_order_acquire);
        // The DTV service must know the queue's name before the creator continues and opens a filter.
        service->updateIPCChannelNames();
        pthread_cond_signal(&startCondition);
    }
    BLOG_TAGGED(blog::kOrdinary, "thread_proc_section_data create Signal 1\n\n");
    deliverSections(service, *occupancy, *queue, *receiver->message);
    return nullptr;
}

/// The delivery thread's loop. A receive error ends it for good: the queue's handle stays set, so no new thread is
/// created. The loop also ends when the object is gone; a stay protects every access to the object.
void BrowserDVBService::deliverSections(BrowserDVBService* service, Occupancy& occupancy, IPCMessageQueue& queue,
                                        SectionDataIPCMessage& message) {
    Occupancy::Stay stay(occupancy, Occupancy::As::worker);
    while (stay && service->keepRunning()) {
        stay.leave();
        try {
            queue.Receive(message);
        } catch (const boost::interprocess::interprocess_exception& error) {
            BLOG_TAGGED_AS(blog::kFailure, "thread_proc_section_data",
                           "Failed to received DTV data. Exception occured: %s\n", error.what());
            usleep(kPauseAfterReceiveError);
            return;
        }
        if (stay.enterAgain()) {
            service->deliverSection(message);
        }
    }
    orphanedQueue.store(&queue, std::memory_order_relaxed);
}

/// Silently drops sections of filters that are closed or unknown.
void BrowserDVBService::deliverSection(const SectionDataIPCMessage& message) {
    // A length above the buffer size means that data is missing or wrong: a client would read beyond the buffer.
    if (message.dataLength > SectionDataIPCMessage::kBufferSize) {
        BLOG_TAGGED_AS(blog::kFailure, "thread_proc_section_data",
                       "Section of %u bytes does not fit the buffer of %u: %s\n", message.dataLength,
                       static_cast<unsigned int>(SectionDataIPCMessage::kBufferSize), message.sessionName.c_str());
        return;
    }
    const Receiver receiver = findReceiver(message.sessionName);
    if (receiver.filter == nullptr) {
        return;
    }
    if (receiver.client == nullptr) {
        BLOG_TAGGED_AS(blog::kFailure, "thread_proc_section_data", "Invalid Message for Client: %p\n",
                       static_cast<void*>(receiver.filter->client()));
        return;
    }
    receiver.client->onSectionData(receiver.filter->name(), receiver.filter->pid(), message.data, message.dataLength);
}

int BrowserDVBService::onFilterSectionDataArrived(frame::MsgIds&, const frame::TransportInfo&,
                                                  const std::string& session, const std::string&, unsigned int length) {
    BLOG_TAGGED(blog::kFailure,
                "Sending section through shared memory is removed due to performance issue. Please using IPC message "
                "instead.\n");
    BLOG_TAGGED(blog::kOrdinary, "session: %s, len:%d\n", session.c_str(), static_cast<int>(length));
    return 0;
}

}  // namespace velmora::dvbservice
