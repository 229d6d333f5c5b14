// Implements the platform's transport.
#include "wire.h"

#include <algorithm>
#include <memory>

#include "io_service.h"
#include "platform_common/io_backend.h"
#include "platform_common/record_image.h"

namespace {

struct Registered {
    frame::MsgMeta header;
    frameLmqMessageHandler handler;
    void* context;
    const ovxEndianTable* table;
};

/// Of the one member under test. A member that is made anew replaces its handlers.
std::vector<Registered> registered;
fuzz::wire::Spy spy;

std::vector<Registered>::iterator find(const frame::MsgMeta& header) {
    return std::find_if(registered.begin(), registered.end(), [&header](const Registered& each) {
        return each.header.interfaceId == header.interfaceId && each.header.messageId == header.messageId &&
               each.header.direction == header.direction;
    });
}

}  // namespace

/// A handle without state.
struct frameLmqIOService {};

namespace fuzz::wire {

frameLmqIOService* newService() {
    static frameLmqIOService service;
    return &service;
}

std::size_t handlers() {
    return registered.size();
}

std::size_t placeOf(const frame::MsgMeta& header) {
    return static_cast<std::size_t>(find(header) - registered.begin());
}

bool deliver(std::size_t place, std::uint32_t peer, const std::vector<std::uint8_t>& image) {
    const Registered& to = registered.at(place % registered.size());
    platform_common::DecodedRecord record;
    std::string error;
    // As the host's transport does, with no more room than it promises.
    const std::unique_ptr<std::uint8_t[]> bytes(new std::uint8_t[image.size() + 1]);
    std::copy(image.begin(), image.end(), bytes.get());
    if (!platform_common::decodeRecordInPlace(*to.table, platform_common::wireSizeOf(*to.table), bytes.get(),
                                              image.size(), record, error)) {
        return false;
    }
    frame::TransportInfo transport;
    transport.peer = peer;
    to.handler(to.header, transport, record.record(), to.context);
    return true;
}

void setSpy(Spy newSpy) {
    spy = std::move(newSpy);
}

}  // namespace fuzz::wire

namespace platform_common {

frameLmqIOService* createIOService(frame::AbstractMarshallingImpl&) {
    return fuzz::wire::newService();
}
int setUpIOService(frameLmqIOService*) {
    return 0;
}
int startIOService(frameLmqIOService*) {
    return 0;
}
int stopIOService(frameLmqIOService*) {
    return 0;
}
void destroyIOService(frameLmqIOService*) {}

}  // namespace platform_common

/// No service is there to be offered a queue.
void host::offerToServices(const NamedQueue&) {}

int frameLmqIOServiceSendStructure(frameLmqIOService*, frame::MsgIds&, const frame::MsgMeta& header, int,
                                   const ovxEndianTable* table, const void* record) {
    const std::vector<std::uint8_t> image = platform_common::encodeRecord(*table, record);
    if (spy) {
        spy(header, image);
    }
    return 0;
}

int frameLmqIOServiceRegisterMessageHandlerFunction(frameLmqIOService*, const frame::MsgMeta& header,
                                                    frameLmqMessageHandler handler, void* context,
                                                    const ovxEndianTable* table) {
    const auto known = find(header);
    if (known == registered.end()) {
        registered.push_back({header, handler, context, table});
    } else {
        *known = {header, handler, context, table};
    }
    return 0;
}
