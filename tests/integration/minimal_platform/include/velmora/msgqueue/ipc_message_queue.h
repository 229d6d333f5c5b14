// The queue of sections for the browser's process.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace velmora::msgqueue {

class IPCMessage {
public:
    virtual ~IPCMessage() = default;
};

class SectionDataIPCMessage : public IPCMessage {
public:
    static constexpr std::size_t kBufferSize = 8192;
    ~SectionDataIPCMessage() override;

    std::string sessionName;
    std::uint32_t dataLength = 0;
    std::uint8_t* data = nullptr;
};

class IPCMessageQueue {
public:
    static IPCMessageQueue* create(const std::string& name, std::size_t maxMessageSize, std::size_t maxMessages);
    void Receive(IPCMessage& message);
};

}  // namespace velmora::msgqueue
