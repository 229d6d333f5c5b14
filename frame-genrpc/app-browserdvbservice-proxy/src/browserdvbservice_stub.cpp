// The service stub: events out, commands in.
#include "browserdvbservice_stub.h"

#include "message_transfer.h"

namespace lo::browserdvbservice {

namespace {

template <typename Message>
int callHandler(const frame::MsgMeta&, const frame::TransportInfo& transport, const void* record, void* context) {
    frame::MsgIds asker;
    asker.peer = transport.peer;
    return Message::deliver(*static_cast<CommandHandler*>(context), asker, transport,
                            *static_cast<const typename Message::Record*>(record));
}

}  // namespace

ServiceStub::ServiceStub(CommandHandler& newHandler)
    : frame::AbstractMarshallingImpl(frame::CouplingModeService), handler(newHandler) {
    setServiceName(kServiceName);
}

int ServiceStub::registerMessageHandlers() {
#define COMMAND(identifier, operation, Message, fields) \
    registerHandler<messages::Message>(lmqIOService(), callHandler<messages::Message>, &handler);
#include "browserdvbservice_messages.inc"
    return 0;
}

void ServiceStub::onIOConnectionConnected(const frame::TransportInfo& peer) {
    handler.browserConnected(peer);
}
void ServiceStub::onIOConnectionDisconnected(const frame::TransportInfo& peer) {
    handler.browserDisconnected(peer);
}

#define EVENT(identifier, operation, Message, decoder, fields)                                              \
    int ServiceStub::operation(frame::MsgIds& ids, const frame::TransportInfo& FIELDS_PARAMETERS(fields)) { \
        return sendMessage<messages::Message>(lmqIOService(), ids FIELDS_ARGUMENTS(fields));                \
    }
#include "browserdvbservice_messages.inc"

}  // namespace lo::browserdvbservice
