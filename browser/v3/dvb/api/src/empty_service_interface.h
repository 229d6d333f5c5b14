// EmptyServiceInterface: the null service, used while there is no service interface. Every operation writes a line and
// returns -1.
// Threads: any; it has no state.
// Blocks:  never.
// Fails:   always, with -1.
#pragma once

#include "browserdvbservice_interfaces.h"

namespace lo::browserdvbservice {

class EmptyServiceInterface : public ServiceInterface {
public:
    EmptyServiceInterface();
    ~EmptyServiceInterface() override;

    /// The process's one instance, created at first use and never deleted.
    static EmptyServiceInterface* shared();

#define COMMAND(identifier, operation, Message, fields) \
    int operation(frame::MsgIds& ids, const frame::TransportInfo& transport FIELDS_PARAMETERS(fields)) override;
#include "browserdvbservice_messages.inc"

    int addClient(boost::shared_ptr<ClientInterface> client) override;
    int removeClient(boost::shared_ptr<ClientInterface> client) override;
};

}  // namespace lo::browserdvbservice
