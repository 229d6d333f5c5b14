// Commands: posts the browsers' commands from the transport thread to the loop, which calls the handler of the room in
// charge.
// Threads: commands arrive on the transport thread; handlers run on the loop's. Set them before the first command.
// Blocks:  never.
// Fails:   a command without a handler is refused in the log.
#pragma once

#include <functional>

#include "browserdvbservice_stub.h"
#include "browsers.h"
#include "event_loop.h"
#include "service_log.h"

namespace dtvservice {

/// One handler for each command, under the command's name. Its parameters are the asking browser and the values.
struct CommandHandlers {
#define COMMAND(identifier, operation, Message, fields) \
    std::function<void(Browser asker FIELDS_PARAMETER_TYPES(fields))> operation;
#include "browserdvbservice_messages.inc"
};

class Commands : public lo::browserdvbservice::CommandHandler {
public:
    using Change = std::function<void(Browser browser)>;

    /// The loop must outlive this object, and run no task after this object ends. `newConnected` and `newGone` are
    /// called on the loop's thread.
    Commands(EventLoop& newLoop, Change newConnected, Change newGone)
        : loop(newLoop), connected(std::move(newConnected)), gone(std::move(newGone)) {}

    CommandHandlers on;

#define COMMAND(identifier, operation, Message, fields)                                                 \
    int operation(frame::MsgIds& ids, const frame::TransportInfo& FIELDS_PARAMETERS(fields)) override { \
        post(#operation, on.operation, ids.peer FIELDS_ARGUMENTS(fields));                              \
        return 0;                                                                                       \
    }
#include "browserdvbservice_messages.inc"

    void browserConnected(const frame::TransportInfo& peer) override {
        BLOG_TAGGED(blog::kOrdinary, "browser %u connected\n", peer.peer);
        loop.post([this, browser = peer.peer] { connected(browser); });
    }
    void browserDisconnected(const frame::TransportInfo& peer) override {
        BLOG_TAGGED(blog::kOrdinary, "browser %u disconnected\n", peer.peer);
        loop.post([this, browser = peer.peer] { gone(browser); });
    }

private:
    template <typename Handler, typename... Values>
    void post(const char* operation, const Handler& handler, Browser asker, const Values&... values) {
        loop.post([=, &handler] {
            if (handler) {
                handler(asker, values...);
            } else {
                BLOG_TAGGED_AS(blog::kUnsupported, operation, "refused: nothing here handles %s\n", operation);
            }
        });
    }

    EventLoop& loop;
    Change connected;
    Change gone;
};

}  // namespace dtvservice
