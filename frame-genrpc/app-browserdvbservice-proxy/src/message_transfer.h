// Message descriptors, one for each message, and the steps that are the same for all of them: fill and send a record,
// register a handler, deliver a received record to the operation of its name.
// Threads: any; nothing is shared.
// Fails:   transfers return the transport's result; filling throws std::bad_alloc. Buffers are freed in every case.
#pragma once

#include "browserdvbservice_interfaces.h"
#include "browserdvbservice_records.h"
#include "frame/lmq_io_service.h"

namespace lo::browserdvbservice {

/// The header's direction and the last bit of the interface identifier tell commands from events.
constexpr std::uint32_t kCommandInterfaceId = 0x1CCD7773;
constexpr std::uint32_t kEventInterfaceId = 0x1CCD7774;
constexpr std::uint8_t kCommandDirection = 0;
constexpr std::uint8_t kEventDirection = 1;

namespace messages {

// deliver() calls the operation by its spelling, so any class with an operation of that name can be the target.
#define MESSAGE(identifier, operation, Message, interfaceIdentifier, directionFlag, fields)                   \
    struct Message {                                                                                          \
        using Record = browserdvbserviceMsg##Message##_t;                                                     \
        static constexpr const char* kName = #operation;                                                      \
        static frame::MsgMeta header() { return {-1, interfaceIdentifier, identifier, directionFlag}; }       \
        static const ovxEndianTable* table() { return &__ovx_EndianTable_browserdvbserviceMsg##Message##_t; } \
        static void fill([[maybe_unused]] Record& record FIELDS_PARAMETERS(fields)) { FIELDS_STORE(fields) }  \
        static void release([[maybe_unused]] Record& record) { FIELDS_RELEASE(fields) }                       \
        template <typename Target>                                                                            \
        static int deliver(Target& target, frame::MsgIds& ids, const frame::TransportInfo& transport,         \
                           [[maybe_unused]] const Record& record) {                                           \
            return target.operation(ids, transport FIELDS_LOADED(fields));                                    \
        }                                                                                                     \
    };
#define COMMAND(identifier, operation, Message, fields) \
    MESSAGE(identifier, operation, Message, kCommandInterfaceId, kCommandDirection, fields)
#define EVENT(identifier, operation, Message, decoder, fields) \
    MESSAGE(identifier, operation, Message, kEventInterfaceId, kEventDirection, fields)
#include "browserdvbservice_messages.inc"
#undef MESSAGE

}  // namespace messages

/// A record to be sent. It starts zeroed, and frees its carriers' buffers however the send ends.
template <typename Message>
class OutgoingRecord {
public:
    template <typename... Arguments>
    explicit OutgoingRecord(const Arguments&... arguments) : releaser{record} {
        Message::fill(record, arguments...);
    }
    const void* bytes() const { return &record; }

private:
    // A member rather than the destructor: if the fill throws half-way, this still frees what it had allocated.
    struct Releaser {
        typename Message::Record& held;
        ~Releaser() { Message::release(held); }
    };
    typename Message::Record record{};
    Releaser releaser;
};

/// Sends one message. Returns the transport's result unchanged.
template <typename Message, typename... Arguments>
int sendMessage(frameLmqIOService* service, frame::MsgIds& ids, const Arguments&... arguments) {
    const OutgoingRecord<Message> outgoing(arguments...);
    return frameLmqIOServiceSendStructure(service, ids, Message::header(), 0, Message::table(), outgoing.bytes());
}

template <typename Message>
void registerHandler(frameLmqIOService* service, frameLmqMessageHandler handler, void* context) {
    frameLmqIOServiceRegisterMessageHandlerFunction(service, Message::header(), handler, context, Message::table());
}

}  // namespace lo::browserdvbservice
