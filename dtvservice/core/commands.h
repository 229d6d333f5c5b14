// Commands: what browsers ask for, brought from the transport thread to the loop's, and there to the room that has it.
// Threads: commands arrive on the transport thread; handlers are set before the first one, and run on the loop's.
// Blocks:  never.
// Fails:   a command without a handler is refused in the log.
#pragma once

#include <functional>

#include "browserdvbservice_stub.h"
#include "browsers.h"
#include "event_loop.h"
#include "service_log.h"

namespace dtvservice {

/// What is done with each command, under the command's name: called with the browser that asks, and the values.
struct CommandHandlers {
#define COMMAND(identifier, operation, Message, fields) \
    std::function<void(Browser asker FIELDS_PARAMETER_TYPES(fields))> operation;
#include "browserdvbservice_messages.inc"
};

class Commands : public lo::browserdvbservice::CommandHandler {
public:
    using Change = std::function<void(Browser browser)>;

    /// The loop must outlive this, and run none of its tasks afterwards. Browsers' coming and going is told on it.
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
