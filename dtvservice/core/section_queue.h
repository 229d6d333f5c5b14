// SectionQueue: the queue of one browser that its sections go to.
// Threads: the loop's.
// Blocks:  never: a full queue takes nothing.
// Fails:   as each operation says.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "browsers.h"
#include "velmora/msgqueue/ipc_message_queue.h"

namespace dtvservice {

class SectionQueue {
public:
    /// Opens the queue of this name; false if the browser has none. An empty name closes the queue.
    bool open(Browser browser, const std::string& name);
    /// Whether there is a queue. A browser tells the name only once, to the service that ran then, so a service that
    /// was started later takes the queue that the platform knows.
    bool isOpen(Browser browser);
    explicit operator bool() const { return queue != nullptr; }
    /// Writes a section for the filter; false if the queue is full. Only for an open queue.
    bool trySend(const std::string& session, std::string_view section);

private:
    std::unique_ptr<velmora::msgqueue::IPCMessageQueue> queue;
    bool isClosed = false;  // by the browser
};

}  // namespace dtvservice
