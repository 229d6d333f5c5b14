// IPC message queue: moves bulk data between two processes. A browser creates the queue and reads it on one thread; the
// DTV service opens it and writes. The platform makes the browser's queues known to each service that it connects to. A
// platform may throw a reader's errors as boost::interprocess::interprocess_exception.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "frame/api.h"

namespace velmora::msgqueue {

/// A message in the queue. The platform defines encode() and decode(), and so the bytes in the queue.
class DTV_PLATFORM_API IPCMessage {
public:
    IPCMessage() = default;
    IPCMessage(const IPCMessage&) = delete;
    IPCMessage& operator=(const IPCMessage&) = delete;
    virtual ~IPCMessage();

    /// Writes the message to `bytes`. Returns the number of bytes, or 0 when `capacity` is too small.
    virtual std::size_t encode(std::uint8_t* bytes, std::size_t capacity) const = 0;
    /// Reads the message, each byte once: a writer may change them meanwhile. False when the bytes are not a valid
    /// message; the message is then unspecified.
    virtual bool decode(const std::uint8_t* bytes, std::size_t length) = 0;
};

/// One section on its way to the filter that requested it.
class DTV_PLATFORM_API SectionDataIPCMessage : public IPCMessage {
public:
    /// Size of a reader's buffer. decode() refuses longer sections.
    static constexpr std::size_t kBufferSize = 8192;

    SectionDataIPCMessage() = default;
    /// Frees `data` with delete[]. The owner of a lent buffer must set the pointer to null first.
    ~SectionDataIPCMessage() override;

    std::size_t encode(std::uint8_t* bytes, std::size_t capacity) const override;
    bool decode(const std::uint8_t* bytes, std::size_t length) override;

    std::string sessionName;       ///< session name of the filter
    std::uint32_t dataLength = 0;  ///< bytes of the section in `data`
    std::uint8_t* data = nullptr;  ///< a reader points it to kBufferSize bytes before its first receive
};

class DTV_PLATFORM_API IPCMessageQueue {
public:
    /// Creates the queue and replaces an old one with the same name. Null when it cannot be created; throws nothing.
    /// Takes messages of at least `maxMessageSize` bytes and holds at least `maxMessages` of them. Any thread.
    static IPCMessageQueue* create(const std::string& name, std::size_t maxMessageSize, std::size_t maxMessages);

    /// Opens the queue of that name that the process behind a connection has created; with an empty name the one that
    /// it has created last. A peer has only its own queues, and they come before the commands that it sends after
    /// creating them. Null when it has none. Any thread.
    static IPCMessageQueue* open(std::uint32_t peer, const std::string& name);

    IPCMessageQueue(const IPCMessageQueue&) = delete;
    IPCMessageQueue& operator=(const IPCMessageQueue&) = delete;
    /// The creator's handle withdraws the queue's name. The memory goes with the last of both processes' handles.
    ~IPCMessageQueue();

    /// Waits for a message and reads it into `message`. Drops bytes that are not a message of that kind, with a line,
    /// and continues to wait. One thread at a time.
    void Receive(IPCMessage& message);

    /// Writes a message if there is room. Never waits: false when the queue is full. Any thread.
    bool TrySend(const IPCMessage& message);

private:
    struct State;
    explicit IPCMessageQueue(std::unique_ptr<State> newState);

    std::unique_ptr<State> state;
};

}  // namespace velmora::msgqueue
