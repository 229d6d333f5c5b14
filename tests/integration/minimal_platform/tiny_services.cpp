// Log, locks, threads, the wait for a singleton, and section queues, each a list in memory.
#include <sched.h>

#include <condition_variable>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <map>
#include <mutex>

#include "ovx/debug.h"
#include "ovx/guard.h"
#include "ovx/osal_thread.h"
#include "tiny/tiny_platform.h"
#include "velmora/base/wait_for_instance.h"
#include "velmora/msgqueue/ipc_message_queue.h"

namespace {

struct Queue : velmora::msgqueue::IPCMessageQueue {
    std::deque<std::pair<std::string, std::vector<std::uint8_t>>> sections;
};

/// Never destroyed, because the library's thread waits here until the process ends.
struct State {
    std::mutex lock;
    std::condition_variable arrived;
    std::map<std::string, Queue*> queues;
    std::vector<std::string> lines;
};

State& state() {
    static auto& only = *new State;
    return only;
}

}  // namespace

extern "C" {

int ovxDebugCheckLevelGetFrameAndChunk(std::uint32_t, ovxDebugFrame** frame, ovxDebugChunk** chunk) {
    *frame = nullptr;
    *chunk = nullptr;
    return 1;
}

void ovxDebugOutput0(ovxDebugFrame*, ovxDebugChunk*, std::uint32_t, const char* format, ...) {
    char line[1000];
    va_list values;
    va_start(values, format);
    std::vsnprintf(line, sizeof line, format, values);
    va_end(values);
    const std::lock_guard<std::mutex> guard(state().lock);
    state().lines.emplace_back(line);
}

const char* blog_base_name(const char* path) {
    const char* const slash = std::strrchr(path, '/');
    return slash == nullptr ? path : slash + 1;
}

void dump_memory(const char*, const void*, std::uint32_t, int) {}

int _ovxOsalPOSIX_pthread_attr_init(pthread_attr_t* attributes) {
    return pthread_attr_init(attributes);
}
int _ovxOsalPOSIX_pthread_attr_destroy(pthread_attr_t* attributes) {
    return pthread_attr_destroy(attributes);
}
int _ovxOsalPOSIX_pthread_create_line(pthread_t* thread, const pthread_attr_t* attributes, void* (*entry)(void*),
                                      void* argument, const char*, int) {
    return pthread_create(thread, attributes, entry, argument);
}
}

ltGuard::ltGuard(pthread_mutex_t& toHold) : held(toHold) {
    pthread_mutex_lock(&held);
}
ltGuard::~ltGuard() {
    pthread_mutex_unlock(&held);
}

namespace velmora::base::internal {

std::intptr_t WaitForInstance(std::intptr_t* word) {
    std::intptr_t value = 0;
    while ((value = __atomic_load_n(word, __ATOMIC_ACQUIRE)) <= 1) {
        sched_yield();
    }
    return value;
}

}  // namespace velmora::base::internal

namespace velmora::msgqueue {

SectionDataIPCMessage::~SectionDataIPCMessage() {
    delete[] data;
}

IPCMessageQueue* IPCMessageQueue::create(const std::string& name, std::size_t, std::size_t) {
    const std::lock_guard<std::mutex> guard(state().lock);
    auto* const queue = new Queue;
    state().queues[name] = queue;
    return queue;
}

void IPCMessageQueue::Receive(IPCMessage& message) {
    auto& section = static_cast<SectionDataIPCMessage&>(message);
    auto& sections = static_cast<Queue*>(this)->sections;
    std::unique_lock<std::mutex> guard(state().lock);
    state().arrived.wait(guard, [&sections] { return !sections.empty(); });
    section.sessionName = sections.front().first;
    section.dataLength = static_cast<std::uint32_t>(sections.front().second.size());
    std::memcpy(section.data, sections.front().second.data(), sections.front().second.size());
    sections.pop_front();
}

}  // namespace velmora::msgqueue

namespace tiny {

bool writeSection(const std::string& name, const std::string& session, const std::vector<std::uint8_t>& section) {
    const std::lock_guard<std::mutex> guard(state().lock);
    const auto found = state().queues.find(name);
    if (found == state().queues.end() || section.size() > velmora::msgqueue::SectionDataIPCMessage::kBufferSize) {
        return false;
    }
    found->second->sections.emplace_back(session, section);
    state().arrived.notify_all();
    return true;
}

std::vector<std::string> queues() {
    const std::lock_guard<std::mutex> guard(state().lock);
    std::vector<std::string> names;
    for (const auto& queue : state().queues) {
        names.push_back(queue.first);
    }
    return names;
}

std::vector<std::string> lines() {
    const std::lock_guard<std::mutex> guard(state().lock);
    return state().lines;
}

}  // namespace tiny
