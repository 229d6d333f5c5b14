// DisturbedEvents: events on their way to browsers while a scenario may withhold, delay or double them.
// Threads: the loop's.
// Blocks:  never.
// Fails:   as the events do. An event that is withheld or late counts as sent.
#pragma once

#include <tuple>
#include <vector>

#include "core.h"
#include "message_faults.h"

namespace dtvservice {

/// A value that outlives a call.
template <typename Value>
struct KeptValue {
    explicit KeptValue(const Value& newValue) : value(newValue) {}
    const Value& get() const { return value; }
    Value value;
};
/// Bytes that belong to somebody else are copied.
template <>
struct KeptValue<_ovxDeserVectorU8_struct> {
    explicit KeptValue(const _ovxDeserVectorU8_struct& bytes) : copy(bytes.data, bytes.data + bytes.count) {}
    _ovxDeserVectorU8_struct get() const {
        return {static_cast<std::uint32_t>(copy.size()), const_cast<std::uint8_t*>(copy.data())};
    }
    std::vector<std::uint8_t> copy;
};

class DisturbedEvents : public Events {
public:
    /// Both must outlive this object.
    DisturbedEvents(Core& newCore, MessageFaults& newFaults) : core(newCore), faults(newFaults) {}

#define EVENT(identifier, operation, Message, decoder, fields)                                          \
    int operation(frame::MsgIds& ids, const frame::TransportInfo& FIELDS_PARAMETERS(fields)) override { \
        return pass(ids.peer, identifier, &Events::operation FIELDS_ARGUMENTS(fields));                 \
    }
#include "browserdvbservice_messages.inc"

private:
    template <typename Operation, typename... Values>
    int pass(Browser browser, std::uint32_t identifier, Operation operation, const Values&... values) {
        using Kind = MessageFaults::Kind;
        const std::optional<MessageFaults::Fault> fault = faults.ofEvent(browser, identifier);
        if (!fault) {
            return send(browser, operation, values...);
        }
        if (fault->kind == Kind::withheld) {
            core.tap.event(browser, identifier, values...);
            core.tap.refused(bus::Direction::toBrowser, browser, identifier, "withheld by a scenario");
            return 0;
        }
        if (fault->kind == Kind::late) {
            const auto delay = std::chrono::duration_cast<EventLoop::Clock::duration>(fault->late);
            core.loop.postAt(EventLoop::Clock::now() + delay, [this, browser, operation,
                                                               kept = std::make_tuple(KeptValue<Values>(values)...)] {
                std::apply([&](const auto&... each) { send(browser, operation, each.get()...); }, kept);
            });
            return 0;
        }
        send(browser, operation, values...);
        return send(browser, operation, values...);
    }

    template <typename Operation, typename... Values>
    int send(Browser browser, Operation operation, const Values&... values) {
        Events* const sender = core.browsers.sender();
        if (sender == nullptr || core.browsers.all().count(browser) == 0) {
            return 0;
        }
        frame::MsgIds ids;
        ids.peer = browser;
        return (sender->*operation)(ids, frame::TransportInfo(), values...);
    }

    Core& core;
    MessageFaults& faults;
};

}  // namespace dtvservice
