// IPC message queue: bulk data between two processes by the name of the queue. One process creates the queue and reads
// it on one thread; the other opens it and writes. Errors of the queue itself are thrown as
// boost::interprocess::interprocess_exception.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "frame/api.h"

namespace velmora::msgqueue {

/// A message as the queue moves it. encode() and decode() belong to the platform: the bytes in the queue are its own.
class DTV_PLATFORM_API IPCMessage {
public:
    IPCMessage() = default;
    IPCMessage(const IPCMessage&) = delete;
    IPCMessage& operator=(const IPCMessage&) = delete;
    virtual ~IPCMessage();

    /// Writes the message to `bytes`; the number of bytes, or 0 when `capacity` does not suffice.
    virtual std::size_t encode(std::uint8_t* bytes, std::size_t capacity) const = 0;
    /// Reads the message; false, and the message unspecified, when the bytes are not one.
    virtual bool decode(const std::uint8_t* bytes, std::size_t length) = 0;
};

/// One section on its way to the filter that asked for it.
class DTV_PLATFORM_API SectionDataIPCMessage : public IPCMessage {
public:
    /// Bytes that a reader's buffer has to hold. decode() refuses a longer section.
    static constexpr std::size_t kBufferSize = 8192;

    SectionDataIPCMessage() = default;
    /// Frees `data` with delete[]; whoever lends a buffer sets the pointer back to null first.
    ~SectionDataIPCMessage() override;

    std::size_t encode(std::uint8_t* bytes, std::size_t capacity) const override;
    bool decode(const std::uint8_t* bytes, std::size_t length) override;

    std::string sessionName;       ///< session name of the filter
    std::uint32_t dataLength = 0;  ///< bytes of the section in `data`
    std::uint8_t* data = nullptr;  ///< a reader sets it to a buffer of kBufferSize bytes before the first receive
};

class DTV_PLATFORM_API IPCMessageQueue {
public:
    /// Creates the queue, replacing a left-over of the same name. Null when it cannot be created; nothing is thrown.
    /// Messages of at least `maxMessageSize` bytes are taken, and at least `maxMessages` of them are held.
    static IPCMessageQueue* create(const std::string& name, std::size_t maxMessageSize, std::size_t maxMessages);

    /// Opens a queue that another process has created. Null when there is none, or none that this process can use.
    static IPCMessageQueue* open(const std::string& name);

    IPCMessageQueue(const IPCMessageQueue&) = delete;
    IPCMessageQueue& operator=(const IPCMessageQueue&) = delete;
    /// The creator's handle removes the queue's name; so does that of another process where the creator has been
    /// killed.
    ~IPCMessageQueue();

    /// Waits for a message and reads it into `message`. Bytes that are no message of that kind are dropped with a line,
    /// and the wait goes on. One thread at a time.
    void Receive(IPCMessage& message);

    /// Writes a message if there is room. Never waits: false when the queue is full. Any thread.
    bool TrySend(const IPCMessage& message);

private:
    struct State;
    explicit IPCMessageQueue(std::unique_ptr<State> newState);

    std::unique_ptr<State> state;
};

}  // namespace velmora::msgqueue
