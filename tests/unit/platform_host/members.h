// A service and clients of a small test interface: one message with a number and a text in each direction.
#pragma once

#include <sched.h>

#include <atomic>
#include <cstddef>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include "frame/process_member.h"
#include "locks/lock.h"
#include "platform_common/io_backend.h"

namespace toy {

struct __attribute__((packed)) Record {
    std::uint8_t odd;
    std::uint32_t number;
    _ovxDeserString_struct text;
};

inline constexpr ovxEndianEntry kEntries[] = {
    {ovxEndianKind8, offsetof(Record, odd)},
    {ovxEndianKind32, offsetof(Record, number)},
    {ovxEndianKindNested, offsetof(Record, text), &__ovx_EndianTable_ovxDeserString_t},
    {}};
inline constexpr ovxEndianTable kTable = {sizeof(Record), kEntries};

inline frame::MsgMeta command() {
    return {-1, 100, 1, 0};
}
inline frame::MsgMeta event() {
    return {-1, 101, 2, 1};
}

struct Message {
    std::uint32_t peer;
    std::uint32_t number;
    std::string text;
};

/// One end; records its received messages and its connection changes.
class Member : public frame::AbstractMarshallingImpl {
public:
    explicit Member(int mode, const std::string& name = "toy") : AbstractMarshallingImpl(mode) {
        setServiceName(name);
        service = platform_common::createIOService(*this);
        setLmqIOModule(service);
    }
    ~Member() override {
        platform_common::stopIOService(service);
        platform_common::destroyIOService(service);
    }

    int registerMessageHandlers() override {
        const bool isService = couplingMode() == frame::CouplingModeService;
        return frameLmqIOServiceRegisterMessageHandlerFunction(lmqIOService(), isService ? command() : event(), &take,
                                                               this, &kTable);
    }
    int send(std::uint32_t number, const std::string& text = "", std::uint32_t peer = frame::kAnyId) {
        Record record{7, number, {static_cast<std::uint32_t>(text.size()), const_cast<char*>(text.c_str())}};
        frame::MsgIds ids;
        ids.peer = peer;
        const bool isService = couplingMode() == frame::CouplingModeService;
        return frameLmqIOServiceSendStructure(lmqIOService(), ids, isService ? event() : command(), 0, &kTable,
                                              &record);
    }
    std::vector<Message> received() const {
        const locks::Lock lock(mutex);
        return messages;
    }

    void onIOConnectionConnected(const frame::TransportInfo& transport) override {
        lastPeer = transport.peer;
        ++connected;
    }
    void onIOConnectionConnectionFailed(const frame::TransportInfo&) override { ++failed; }
    void onIOConnectionDisconnected(const frame::TransportInfo&) override { ++disconnected; }

    std::atomic<int> connected{0};
    std::atomic<int> failed{0};
    std::atomic<int> disconnected{0};
    std::atomic<std::uint32_t> lastPeer{0};
    std::atomic<bool> stopFromHandler{false};
    std::atomic<bool> holdHandler{false};

private:
    static int take(const frame::MsgMeta&, const frame::TransportInfo& transport, const void* bytes, void* context) {
        auto* const self = static_cast<Member*>(context);
        Record record;
        std::memcpy(&record, bytes, sizeof record);
        {
            const locks::Lock lock(self->mutex);
            self->messages.push_back({transport.peer, record.number, {record.text.data, record.text.length}});
        }
        if (self->stopFromHandler) {
            self->stop();
        }
        while (self->holdHandler) {
            sched_yield();
        }
        return 0;
    }

    mutable std::mutex mutex;
    std::vector<Message> messages GUARDED_BY(mutex);
    frameLmqIOService* service = nullptr;
};

}  // namespace toy
