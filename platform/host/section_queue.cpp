// The section queue in shared memory. A process that is killed or stopped inside the queue leaves its lock taken. A
// reader then gives up after a while. A writer waits once, and after that does not wait until it gets the lock again.
#include "queue_lock.h"

#include <dirent.h>
#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <boost/interprocess/ipc/message_queue.hpp>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <vector>

#include "host_log.h"
#include "velmora/msgqueue/ipc_message_queue.h"

namespace velmora::msgqueue {

using Queue = boost::interprocess::message_queue;

namespace {

constexpr const char* kBlogTag = host::kBlogTag;
constexpr unsigned int kPriority = 0;
constexpr const char* kSharedMemory = "/dev/shm";
constexpr const char* kSectionPrefix = "SECTION-";
// The layout in shared memory depends on the pointer width. The object's name ends with the width, so that no process
// opens a queue of the other width.
constexpr int kWidth = sizeof(void*) * 8;
constexpr int kOtherWidth = 32 + 64 - kWidth;

std::string objectName(const std::string& name, int width = kWidth) {
    return name + "." + std::to_string(width);
}

bool isThere(const std::string& object) {
    struct stat found {};
    return stat((std::string(kSharedMemory) + "/" + object).c_str(), &found) == 0;
}

/// The library never closes its queues; this removes their names at a normal process exit.
class CreatedQueues {
public:
    static CreatedQueues& instance() {
        static CreatedQueues queues;
        return queues;
    }
    ~CreatedQueues() {
        for (const std::string& name : names) {
            Queue::remove(name.c_str());
        }
    }
    void add(const std::string& name) {
        const std::lock_guard<std::mutex> lock(mutex);
        names.push_back(name);
    }

private:
    std::mutex mutex;  // guards names
    std::vector<std::string> names;
};

/// The id of the process that created a section queue, from the queue's name, or 0.
pid_t processOf(const std::string& name) {
    const std::string prefix = kSectionPrefix;
    constexpr std::size_t kDigits = 8;
    if (name.compare(0, prefix.size(), prefix) != 0 || name.size() <= prefix.size() + kDigits) {
        return 0;
    }
    return static_cast<pid_t>(std::strtoul(name.substr(prefix.size(), kDigits).c_str(), nullptr, 16));
}

/// Whether the process has ended. A zombie counts as ended.
bool isGone(pid_t process) {
    if (kill(process, 0) != 0) {
        return errno == ESRCH;
    }
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string text;
    std::getline(file, text);
    const std::size_t name = text.rfind(')');
    return name != std::string::npos && name + 2 < text.size() && (text[name + 2] == 'Z' || text[name + 2] == 'X');
}

/// A killed process closes its connection a moment before it disappears, so try for a short while.
bool isGoneSoon(pid_t process) {
    constexpr int kTries = 50;
    for (int tries = 0; tries < kTries && !isGone(process); ++tries) {
        usleep(1000);
    }
    return isGone(process);
}

/// Removes our user's section queues whose processes were killed before they could remove them.
void removeLeftOvers() {
    DIR* const directory = opendir(kSharedMemory);
    if (directory == nullptr) {
        return;
    }
    while (const dirent* const entry = readdir(directory)) {
        const std::string name = entry->d_name;
        const pid_t process = processOf(name);
        struct stat found {};
        if (process > 0 && stat((std::string(kSharedMemory) + "/" + name).c_str(), &found) == 0 &&
            found.st_uid == geteuid() && isGone(process)) {
            Queue::remove(name.c_str());
        }
    }
    closedir(directory);
}

/// A thread's limit during one call, or none. A pthread key instead of thread_local: a browser loads the platform at
/// run time, and LeakSanitizer crashes on such a library's thread_local while its thread runs on at exit. Without a key
/// every call has the usual limit.
class ThreadsLimit {
public:
    static const std::int64_t* get() {
        return key().made ? static_cast<const std::int64_t*>(pthread_getspecific(key().number)) : nullptr;
    }
    static void set(const std::int64_t* limit) {
        if (key().made) {
            pthread_setspecific(key().number, limit);
        }
    }

private:
    struct Key {
        pthread_key_t number{};
        bool made = pthread_key_create(&number, nullptr) == 0;
    };
    static const Key& key() {
        static const Key key;
        return key;
    }
};

/// Changes this thread's limit for the queue's lock during one call.
class Patience {
public:
    explicit Patience(std::int64_t milliseconds) : limit(milliseconds) { ThreadsLimit::set(&limit); }
    Patience(const Patience&) = delete;
    Patience& operator=(const Patience&) = delete;
    ~Patience() { ThreadsLimit::set(nullptr); }

private:
    const std::int64_t limit;
};

}  // namespace

std::int64_t lockPatience() {
    const std::int64_t* const limit = ThreadsLimit::get();
    return limit == nullptr ? kPatience : *limit;
}

struct IPCMessageQueue::State {
    std::string name;
    bool creator;
    Queue queue;
    std::vector<std::uint8_t> received;  // used only by the one reader
    std::atomic<bool> isStalled{false};  // the last write did not get the lock

    template <typename... Arguments>
    State(const std::string& newName, bool isCreator, Arguments&&... arguments)
        : name(newName), creator(isCreator), queue(std::forward<Arguments>(arguments)...) {
        received.resize(queue.get_max_msg_size());
    }
};

IPCMessageQueue::IPCMessageQueue(std::unique_ptr<State> newState) : state(std::move(newState)) {}

IPCMessageQueue::~IPCMessageQueue() {
    const std::string object = objectName(state->name);
    const pid_t process = processOf(state->name);
    if (state->creator || (isThere(object) && process > 0 && process != getpid() && isGoneSoon(process))) {
        Queue::remove(object.c_str());
    }
}

IPCMessageQueue* IPCMessageQueue::create(const std::string& name, std::size_t maxMessageSize, std::size_t maxMessages) {
    removeLeftOvers();
    const std::string object = objectName(name);
    try {
        Queue::remove(object.c_str());
        auto state = std::make_unique<State>(name, true, boost::interprocess::create_only, object.c_str(), maxMessages,
                                             maxMessageSize, boost::interprocess::permissions(0600));
        CreatedQueues::instance().add(object);
        return new IPCMessageQueue(std::move(state));
    } catch (const std::exception& error) {
        BLOG_TAGGED(blog::kFailure, "cannot create queue %s: %s\n", name.c_str(), error.what());
        return nullptr;
    }
}

IPCMessageQueue* IPCMessageQueue::open(const std::string& name) {
    try {
        return new IPCMessageQueue(
            std::make_unique<State>(name, false, boost::interprocess::open_only, objectName(name).c_str()));
    } catch (const std::exception&) {
        if (isThere(objectName(name, kOtherWidth))) {
            BLOG_TAGGED(blog::kFailure,
                        "queue %s belongs to a %d-bit process: sections do not reach it from this one of %d bits\n",
                        name.c_str(), kOtherWidth, kWidth);
        }
        return nullptr;
    }
}

void IPCMessageQueue::Receive(IPCMessage& message) {
    while (true) {
        Queue::size_type length = 0;
        unsigned int priority = 0;
        state->queue.receive(state->received.data(), state->received.size(), length, priority);
        if (message.decode(state->received.data(), length)) {
            return;
        }
        BLOG_TAGGED(blog::kFailure, "queue %s: %zu bytes that are no message of its kind; dropped\n",
                    state->name.c_str(), static_cast<std::size_t>(length));
    }
}

bool IPCMessageQueue::TrySend(const IPCMessage& message) {
    std::vector<std::uint8_t> bytes(state->queue.get_max_msg_size());
    const std::size_t length = message.encode(bytes.data(), bytes.size());
    if (length == 0) {
        BLOG_TAGGED(blog::kFailure, "queue %s: a message does not fit %zu bytes; dropped\n", state->name.c_str(),
                    bytes.size());
        return false;
    }
    // Hundreds of sections arrive each second: waiting for each would delay the writer's other work.
    constexpr std::int64_t kNone = 0;
    const Patience patience(state->isStalled ? kNone : kPatience);
    try {
        const bool sent = state->queue.try_send(bytes.data(), length, kPriority);
        state->isStalled = false;
        return sent;
    } catch (const boost::interprocess::interprocess_exception&) {
        // A stopped or killed process holds the lock. Treat the queue as full.
        state->isStalled = true;
        return false;
    }
}

}  // namespace velmora::msgqueue
