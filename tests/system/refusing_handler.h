// RefusingHandler: a command handler that refuses every command by name in the log. The service overrides those that it
// handles.
// Threads: the transport thread.
// Blocks:  never.
// Fails:   always, with -1.
#pragma once

#include "browserdvbservice_stub.h"
#include "service_log.h"

namespace dtvservice {

class RefusingHandler : public lo::browserdvbservice::CommandHandler {
public:
#define COMMAND(identifier, operation, Message, fields)                                                  \
    int operation(frame::MsgIds&, const frame::TransportInfo& FIELDS_PARAMETER_TYPES(fields)) override { \
        return refuse(#operation);                                                                       \
    }
#include "browserdvbservice_messages.inc"

private:
    static int refuse(const char* operation) {
        BLOG_TAGGED_AS(blog::kUnsupported, operation, "refused: this service does not handle %s\n", operation);
        return -1;
    }
};

}  // namespace dtvservice
