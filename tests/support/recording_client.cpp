// Records every event. In a source of its own, because the operations of all events take long to compile.
#include "recording_client.h"

template <typename... Values>
int RecordingClient::keep(frame::MsgIds& ids, const frame::TransportInfo& transport, const char* operation,
                          const Values&... values) {
    const std::string text = shownCall(operation, values...);
    {
        const locks::Lock lock(mutex);
        heard.push_back({text, &ids, transport});
    }
    if (reaction) {
        reaction();
    }
    return answer;
}

#define EVENT(identifier, operation, Message, decoder, fields)                                        \
    int RecordingClient::operation(frame::MsgIds& ids,                                                \
                                   const frame::TransportInfo& transport FIELDS_PARAMETERS(fields)) { \
        return keep(ids, transport, #operation FIELDS_ARGUMENTS(fields));                             \
    }
#include "browserdvbservice_messages.inc"
