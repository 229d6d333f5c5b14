// Turns values into the operations' parameters.
#include "event_sender.h"

#include <type_traits>
#include <utility>

namespace dtvservice {

using message_fields::Value;

namespace {

template <typename Parameter>
Parameter parameterOf(const Value& value) {
    if constexpr (std::is_same_v<Parameter, std::string>) {
        return std::get<std::string>(value);
    } else if constexpr (std::is_same_v<Parameter, _ovxDeserVectorU8_struct>) {
        // Valid as long as the value. Nobody writes to it.
        const auto& bytes = std::get<std::string>(value);
        return {static_cast<std::uint32_t>(bytes.size()),
                reinterpret_cast<std::uint8_t*>(const_cast<char*>(bytes.data()))};
    } else {
        const auto* const negative = std::get_if<std::int64_t>(&value);
        return static_cast<Parameter>(negative != nullptr ? *negative
                                                          : static_cast<std::int64_t>(std::get<std::uint64_t>(value)));
    }
}

template <typename... Parameters, std::size_t... index>
void send(Browsers& browsers, Browser to,
          int (Events::*event)(frame::MsgIds& ids, const frame::TransportInfo& transport, Parameters...),
          [[maybe_unused]] const std::vector<Value>& values, std::index_sequence<index...>) {
    browsers.tell({to}, event, parameterOf<std::decay_t<Parameters>>(values.at(index))...);
}

template <typename... Parameters>
void send(Browsers& browsers, Browser to,
          int (Events::*event)(frame::MsgIds& ids, const frame::TransportInfo& transport, Parameters...),
          const std::vector<Value>& values) {
    send(browsers, to, event, values, std::index_sequence_for<Parameters...>());
}

}  // namespace

void sendEvent(Browsers& browsers, Browser to, const message_fields::Message& message,
               const std::vector<Value>& values) {
    switch (message.identifier) {
#define EVENT(identifier, operation, Message, decoder, fields) \
    case identifier:                                           \
        send(browsers, to, &Events::operation, values);        \
        break;
#include "browserdvbservice_messages.inc"
        default:
            break;
    }
}

}  // namespace dtvservice
