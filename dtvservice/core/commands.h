// Commands: passes the browsers' commands from the transport's threads to the loop, which calls the handler of the room
// in charge.
// Threads: commands arrive on the transport's threads, one at a time; handlers run on the loop's. Set them before the
//          first command.
// Blocks:  never.
// Fails:   a command without a handler is refused in the log. If a browser sends commands faster than they are done, the
//          newest are dropped, counted and logged.
#pragma once

#include <functional>

#include "browserdvbservice_stub.h"
#include "browsers.h"
#include "event_loop.h"
#include "repeated_messages.h"
#include "service_log.h"
#include "waiting_commands.h"

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

    /// Loop and tap must outlive this object, and the loop run no task after this object ends. `newConnected` and
    /// `newGone` are called on the loop's thread.
    Commands(EventLoop& newLoop, BusTap& newTap, Change newConnected, Change newGone)
        : tap(newTap), waiting(newLoop), connected(std::move(newConnected)), gone(std::move(newGone)) {}

    CommandHandlers on;
    /// Called on the loop's thread before each command is handled; false if it must not be. Set it before the first
    /// command. Null lets all pass.
    std::function<bool(Browser asker, std::uint32_t identifier)> gate;

#define COMMAND(identifier, operation, Message, fields)                                                 \
    int operation(frame::MsgIds& ids, const frame::TransportInfo& FIELDS_PARAMETERS(fields)) override { \
        tap.command(ids.peer, identifier FIELDS_ARGUMENTS(fields));                                     \
        post(#operation, identifier, on.operation, ids.peer FIELDS_ARGUMENTS(fields));                  \
        return 0;                                                                                       \
    }
#include "browserdvbservice_messages.inc"

    void browserConnected(const frame::TransportInfo& peer) override {
        BLOG_TAGGED(blog::kOrdinary, "browser %u connected\n", peer.peer);
        tap.connected(peer.peer);
        waiting.addNotice(peer.peer, [this, browser = peer.peer] { connected(browser); });
    }
    void browserDisconnected(const frame::TransportInfo& peer) override {
        BLOG_TAGGED(blog::kOrdinary, "browser %u disconnected\n", peer.peer);
        tap.disconnected(peer.peer);
        dropped.erase(peer.peer);
        waiting.addNotice(peer.peer, [this, browser = peer.peer] { gone(browser); });
    }

private:
    /// Approximate bytes of a value that waits.
    static std::size_t sizeOf(const std::string& text) {
        return sizeof(std::string) + text.size();
    }
    static std::size_t sizeOf(const lo::browserdvbservice::OpenFilterMatchMask_t& filter) {
        return sizeof filter + filter.mask.size() + filter.maskBits.size();
    }
    static std::size_t sizeOf(const lo::browserdvbservice::TuneInfoChannel& channel) {
        return sizeof channel + channel.dsd.size();
    }
    template <typename Value>
    static std::size_t sizeOf(const Value& value) {
        return sizeof value;
    }

    template <typename Handler, typename... Values>
    void post(const char* operation, std::uint32_t identifier, const Handler& handler, Browser asker,
              const Values&... values) {
        const std::size_t bytes = (std::size_t{0} + ... + sizeOf(values));
        const bool isKept = waiting.add(
            asker,
            [=, &handler] {
                if (gate && !gate(asker, identifier)) {
                    return;
                }
                if (handler) {
                    handler(asker, values...);
                } else {
                    BLOG_TAGGED_AS(blog::kUnsupported, operation, "refused: nothing here handles %s\n", operation);
                    tap.refused(bus::Direction::toService, asker, identifier, "nothing here handles it");
                }
            },
            bytes);
        if (!isKept) {
            tap.refused(bus::Direction::toService, asker, identifier,
                        "dropped: commands come faster than they are done");
            noteDropped(asker);
        }
    }

    void noteDropped(Browser asker) {
        Dropped& counted = dropped[asker];
        const std::string text = std::to_string(++counted.commands) + " dropped so far";
        if (const auto line = counted.messages.tell("dropped", text, 1)) {
            BLOG_TAGGED(blog::kUnsupported, "browser %u sends commands faster than they are done: %s\n", asker,
                        line->c_str());
        }
    }

    struct Dropped {
        std::uint64_t commands = 0;
        RepeatedMessages messages;
    };

    BusTap& tap;
    WaitingCommands waiting;
    Change connected;
    Change gone;
    std::map<Browser, Dropped> dropped;  // used only by the transport's threads, one at a time
};

}  // namespace dtvservice
