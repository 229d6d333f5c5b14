// Section queues inside the process, and thread creation that tests can make fail.
#include <pthread.h>

#include <algorithm>
#include <boost/interprocess/exceptions.hpp>
#include <deque>
#include <utility>

#include "ovx/osal_thread.h"
#include "recorder.h"
#include "velmora/msgqueue/ipc_message_queue.h"

namespace velmora::msgqueue {

namespace {

/// The state that all handles of a name share. It lives as long as the process.
struct Channel {
    const std::size_t maxMessageSize;
    const std::size_t maxMessages;
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::vector<std::uint8_t>> messages GUARDED_BY(mutex);
    bool failing GUARDED_BY(mutex) = false;
    std::exception_ptr failure GUARDED_BY(mutex);  // null for an interprocess error

    Channel(std::size_t newMaxMessageSize, std::size_t newMaxMessages)
        : maxMessageSize(newMaxMessageSize), maxMessages(newMaxMessages) {}
};

/// All channels by name.
class Channels {
public:
    static Channels& instance() {
        static auto* const channels = new Channels;
        return *channels;
    }

    Channel* add(const std::string& name, std::size_t maxMessageSize, std::size_t maxMessages) {
        auto* const channel = new Channel(maxMessageSize, maxMessages);
        const locks::Lock lock(mutex);
        byName[name] = channel;
        return channel;
    }

    Channel* find(const std::string& name) {
        const locks::Lock lock(mutex);
        const auto found = byName.find(name);
        return found == byName.end() ? nullptr : found->second;
    }

    std::vector<std::string> names() {
        const locks::Lock lock(mutex);
        std::vector<std::string> names;
        for (const auto& entry : byName) {
            names.push_back(entry.first);
        }
        return names;
    }

private:
    std::mutex mutex;
    std::map<std::string, Channel*> byName GUARDED_BY(mutex);
};

}  // namespace

struct IPCMessageQueue::State {
    Channel* channel;
};

IPCMessageQueue::IPCMessageQueue(std::unique_ptr<State> newState) : state(std::move(newState)) {}
IPCMessageQueue::~IPCMessageQueue() = default;

IPCMessageQueue* IPCMessageQueue::create(const std::string& name, std::size_t maxMessageSize, std::size_t maxMessages) {
    recording::Recorder& recorder = recording::Recorder::instance();
    {
        const locks::Lock lock(recorder.mutex);
        if (recorder.queueCreationFails) {
            return nullptr;
        }
    }
    Channel* const channel = Channels::instance().add(name, maxMessageSize, maxMessages);
    return new IPCMessageQueue(std::make_unique<State>(State{channel}));
}

/// Each peer has all queues of the process, but only by name.
IPCMessageQueue* IPCMessageQueue::open(std::uint32_t, const std::string& name) {
    Channel* const channel = Channels::instance().find(name);
    return channel == nullptr ? nullptr : new IPCMessageQueue(std::make_unique<State>(State{channel}));
}

void IPCMessageQueue::Receive(IPCMessage& message) {
    Channel& channel = *state->channel;
    locks::Lock lock(channel.mutex);
    while (true) {
        channel.changed.wait(lock.forWaiting(), [&channel]() REQUIRES(channel.mutex) {
            return channel.failing || !channel.messages.empty();
        });
        if (channel.failing) {
            channel.failing = false;
            if (channel.failure) {
                std::rethrow_exception(std::exchange(channel.failure, nullptr));
            }
            throw boost::interprocess::interprocess_exception(boost::interprocess::error_info(EIO), "receive failed");
        }
        const std::vector<std::uint8_t> bytes = std::move(channel.messages.front());
        channel.messages.pop_front();
        channel.changed.notify_all();
        if (message.decode(bytes.data(), bytes.size())) {
            return;
        }
    }
}

bool IPCMessageQueue::TrySend(const IPCMessage& message) {
    Channel& channel = *state->channel;
    std::vector<std::uint8_t> bytes(channel.maxMessageSize);
    bytes.resize(message.encode(bytes.data(), bytes.size()));
    const locks::Lock lock(channel.mutex);
    if (bytes.empty() || channel.messages.size() >= channel.maxMessages) {
        return false;
    }
    channel.messages.push_back(std::move(bytes));
    channel.changed.notify_all();
    return true;
}

}  // namespace velmora::msgqueue

namespace recording {

void setThreadCreateResult(int error) {
    Recorder& recorder = Recorder::instance();
    const locks::Lock lock(recorder.mutex);
    recorder.threadCreateResult = error;
}

void setQueueCreationFails(bool fails) {
    Recorder& recorder = Recorder::instance();
    const locks::Lock lock(recorder.mutex);
    recorder.queueCreationFails = fails;
}

std::vector<std::string> queueNames() {
    return velmora::msgqueue::Channels::instance().names();
}

QueueLimits queueLimits(const std::string& queue) {
    const velmora::msgqueue::Channel* const channel = velmora::msgqueue::Channels::instance().find(queue);
    return channel == nullptr ? QueueLimits{} : QueueLimits{channel->maxMessageSize, channel->maxMessages};
}

std::vector<ThreadKind> threadsCreated() {
    Recorder& recorder = Recorder::instance();
    const locks::Lock lock(recorder.mutex);
    return recorder.threadsCreated;
}

bool writeSection(const std::string& queue, const std::string& session, const std::vector<std::uint8_t>& section) {
    const std::unique_ptr<velmora::msgqueue::IPCMessageQueue> handle(
        velmora::msgqueue::IPCMessageQueue::open(frame::kAnyId, queue));
    if (!handle) {
        return false;
    }
    velmora::msgqueue::SectionDataIPCMessage message;
    message.sessionName = session;
    message.dataLength = static_cast<std::uint32_t>(section.size());
    message.data = new std::uint8_t[section.size()];
    std::copy(section.begin(), section.end(), message.data);
    return handle->TrySend(message);
}

std::size_t waitingSections(const std::string& queue) {
    velmora::msgqueue::Channel* const channel = velmora::msgqueue::Channels::instance().find(queue);
    if (channel == nullptr) {
        return 0;
    }
    const locks::Lock lock(channel->mutex);
    return channel->messages.size();
}

bool failReceive(const std::string& queue, std::exception_ptr error) {
    velmora::msgqueue::Channel* const channel = velmora::msgqueue::Channels::instance().find(queue);
    if (channel == nullptr) {
        return false;
    }
    const locks::Lock lock(channel->mutex);
    channel->failing = true;
    channel->failure = std::move(error);
    channel->changed.notify_all();
    return true;
}

}  // namespace recording

int _ovxOsalPOSIX_pthread_create_line(pthread_t* thread, const pthread_attr_t* attributes, void* (*entry)(void*),
                                      void* argument, const char*, int) {
    recording::Recorder& recorder = recording::Recorder::instance();
    {
        const locks::Lock lock(recorder.mutex);
        if (recorder.threadCreateResult != 0) {
            return recorder.threadCreateResult;
        }
        int state = PTHREAD_CREATE_JOINABLE;
        if (attributes != nullptr) {
            pthread_attr_getdetachstate(attributes, &state);
        }
        recorder.threadsCreated.push_back(state == PTHREAD_CREATE_DETACHED ? recording::ThreadKind::detached
                                                                           : recording::ThreadKind::joinable);
    }
    return pthread_create(thread, attributes, entry, argument);
}
