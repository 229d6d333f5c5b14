// ServiceStub: the DTV service's end of the interface, made from the same catalogue as the proxy. Turns each event call
// into a message to the browsers, and each received command into a call of the handler.
// Threads: events from any thread; commands on the transport thread.
// Blocks:  never.
// Fails:   events return the transport's result: 0, or negative when the addressed browser is not there.
#pragma once

#include "browserdvbservice_interfaces.h"
#include "frame/process_member.h"

namespace lo::browserdvbservice {

/// What a DTV service does with commands. `ids` addresses the browser that asked: handed to an event, it is the answer
/// to that browser alone. Results are not looked at.
class CommandHandler {
public:
    virtual ~CommandHandler() = default;

#define COMMAND(identifier, operation, Message, fields) \
    virtual int operation(frame::MsgIds& ids, const frame::TransportInfo& transport FIELDS_PARAMETERS(fields)) = 0;
#include "browserdvbservice_messages.inc"

    /// A browser came or went. On the transport thread.
    virtual void browserConnected(const frame::TransportInfo& peer) = 0;
    virtual void browserDisconnected(const frame::TransportInfo& peer) = 0;
};

/// An event operation sends to the browser that `ids` names, or to all with default ids; its transport is not used.
class ServiceStub : public frame::AbstractMarshallingImpl, public ClientInterface {
public:
    /// The handler must outlive the stub.
    explicit ServiceStub(CommandHandler& newHandler);

    int registerMessageHandlers() override;
    void onIOConnectionConnected(const frame::TransportInfo& peer) override;
    void onIOConnectionDisconnected(const frame::TransportInfo& peer) override;

#define EVENT(identifier, operation, Message, decoder, fields) \
    int operation(frame::MsgIds& ids, const frame::TransportInfo& transport FIELDS_PARAMETERS(fields)) override;
#include "browserdvbservice_messages.inc"

private:
    CommandHandler& handler;
};

}  // namespace lo::browserdvbservice
