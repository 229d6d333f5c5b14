// Opens queues and writes sections.
#include "section_queue.h"

#include <cstdint>

namespace dtvservice {

using velmora::msgqueue::IPCMessageQueue;
using velmora::msgqueue::SectionDataIPCMessage;

namespace {

/// A message that borrows the section's bytes. The message would free them, so the destructor resets the pointer first.
class BorrowedSection {
public:
    BorrowedSection(const std::string& session, std::string_view section) {
        message.sessionName = session;
        message.dataLength = static_cast<std::uint32_t>(section.size());
        message.data = reinterpret_cast<std::uint8_t*>(const_cast<char*>(section.data()));
    }
    BorrowedSection(const BorrowedSection&) = delete;
    BorrowedSection& operator=(const BorrowedSection&) = delete;
    ~BorrowedSection() { message.data = nullptr; }

    SectionDataIPCMessage message;
};

}  // namespace

bool SectionQueue::open(Browser browser, const std::string& name) {
    isClosed = name.empty();
    queue.reset(name.empty() ? nullptr : IPCMessageQueue::open(browser, name));
    return name.empty() || queue != nullptr;
}

bool SectionQueue::isOpen(Browser browser) {
    if (queue == nullptr && !isClosed) {
        queue.reset(IPCMessageQueue::open(browser, std::string()));
    }
    return queue != nullptr;
}

bool SectionQueue::trySend(const std::string& session, std::string_view section) {
    const BorrowedSection borrowed(session, section);
    return queue->TrySend(borrowed.message);
}

}  // namespace dtvservice
