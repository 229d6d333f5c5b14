// ServiceStub: the DTV service's end of the RPC interface, generated from the same catalogue as the proxy. Sends each
// event as a message to the browsers, and calls the handler for each received command.
// Threads: events from any thread; commands on the transport thread.
// Blocks:  never.
// Fails:   events return the transport's result: 0, or negative when the addressed browser is not connected.
#pragma once

#include "browserdvbservice_interfaces.h"
#include "frame/process_member.h"

namespace lo::browserdvbservice {

/// What a DTV service does with commands. `ids` addresses the browser that sent the command: pass it to an event to
/// answer that browser alone. Results are ignored.
class CommandHandler {
public:
    virtual ~CommandHandler() = default;

#define COMMAND(identifier, operation, Message, fields) \
    virtual int operation(frame::MsgIds& ids, const frame::TransportInfo& transport FIELDS_PARAMETERS(fields)) = 0;
#include "browserdvbservice_messages.inc"

    /// A browser connected or disconnected. Called on the transport thread.
    virtual void browserConnected(const frame::TransportInfo& peer) = 0;
    virtual void browserDisconnected(const frame::TransportInfo& peer) = 0;
};

/// An event operation sends to the browser that `ids` names, or to all browsers with default ids. It ignores the
/// transport argument.
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
