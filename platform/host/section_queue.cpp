// The section queue: a ring in shared memory. The platform hands its descriptor to every service that the process
// connects to.
#include <mutex>

#include "bus_file.h"
#include "host_log.h"
#include "io_service.h"
#include "locks/lock.h"
#include "queue_exchange.h"
#include "velmora/msgqueue/ipc_message_queue.h"

namespace velmora::msgqueue {

using host::SectionRing;

namespace {

constexpr const char* kBlogTag = host::kBlogTag;

constexpr bool isPowerOfTwo(std::uint64_t number) {
    return (number & (number - 1)) == 0;
}

}  // namespace

struct IPCMessageQueue::State {
    std::string name;
    bool creator;
    std::shared_ptr<SectionRing> ring;
    host::BusFile* busFile;        // of the creator, which reads; may be null
    std::uint64_t unreadable = 0;  // used only by the one reader
    std::mutex writing;            // one writer at a time

    State(const std::string& newName, bool isCreator, std::shared_ptr<SectionRing> newRing)
        : name(newName),
          creator(isCreator),
          ring(std::move(newRing)),
          busFile(isCreator ? host::BusFile::ofProcess() : nullptr) {}
};

IPCMessageQueue::IPCMessageQueue(std::unique_ptr<State> newState) : state(std::move(newState)) {}

IPCMessageQueue::~IPCMessageQueue() {
    if (state->creator) {
        host::OwnQueues::instance().remove(state->name);
    }
}

IPCMessageQueue* IPCMessageQueue::create(const std::string& name, std::size_t maxMessageSize, std::size_t maxMessages) {
    std::string error;
    const std::shared_ptr<SectionRing> ring = SectionRing::create(maxMessageSize, maxMessages, error);
    if (!ring) {
        BLOG_TAGGED(blog::kFailure, "cannot create queue %s: %s\n", name.c_str(), error.c_str());
        return nullptr;
    }
    const host::NamedQueue queue{name, ring};
    host::OwnQueues::instance().add(queue);
    host::offerToServices(queue);
    return new IPCMessageQueue(std::make_unique<State>(name, true, ring));
}

IPCMessageQueue* IPCMessageQueue::open(std::uint32_t peer, const std::string& name) {
    const std::shared_ptr<SectionRing> ring = host::GivenQueues::instance().find(peer, name);
    return ring ? new IPCMessageQueue(std::make_unique<State>(name, false, ring)) : nullptr;
}

void IPCMessageQueue::Receive(IPCMessage& message) {
    while (true) {
        std::size_t length = 0;
        const std::uint8_t* const bytes = state->ring->next(length);
        const bool isGood = message.decode(bytes, length);
        state->ring->release();
        if (isGood) {
            if (state->busFile != nullptr) {
                state->busFile->received(message);
            }
            return;
        }
        // A writer can do this as often as it likes, so the lines become rarer.
        if (isPowerOfTwo(++state->unreadable)) {
            BLOG_TAGGED(blog::kFailure, "queue %s: %zu bytes that are no message of its kind; dropped, %llu so far\n",
                        state->name.c_str(), length, static_cast<unsigned long long>(state->unreadable));
        }
    }
}

bool IPCMessageQueue::TrySend(const IPCMessage& message) {
    const locks::Lock lock(state->writing);
    std::uint8_t* const slot = state->ring->nextSlot();
    if (slot == nullptr) {
        return false;
    }
    const std::size_t length = message.encode(slot, state->ring->messageSize());
    if (length == 0) {
        BLOG_TAGGED(blog::kFailure, "queue %s: a message does not fit %zu bytes; dropped\n", state->name.c_str(),
                    state->ring->messageSize());
        return false;
    }
    state->ring->publish(length);
    return true;
}

}  // namespace velmora::msgqueue
