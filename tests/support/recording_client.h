// A client of the RPC interface that records every event as text, "operation(value, value)": numbers in decimal,
// strings and byte vectors in hexadecimal after their length.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "browserdvbservice_interfaces.h"
#include "locks/lock.h"
#include "shown_values.h"

inline std::string shownValue(const _ovxDeserVectorU8_struct& carrier) {
    return shownBytes(carrier.data, carrier.count);
}

class RecordingClient : public lo::browserdvbservice::ClientInterface {
public:
    struct Call {
        std::string text;
        frame::MsgIds* ids;
        frame::TransportInfo transport;
    };

    std::vector<Call> calls() const {
        const locks::Lock lock(mutex);
        return heard;
    }
    std::vector<std::string> texts() const {
        std::vector<std::string> result;
        for (const Call& call : calls()) {
            result.push_back(call.text);
        }
        return result;
    }

    /// Called inside every event, after the event was recorded.
    std::function<void()> reaction;
    /// The result of every event.
    int answer = 0;

#define EVENT(identifier, operation, Message, decoder, fields) \
    int operation(frame::MsgIds& ids, const frame::TransportInfo& transport FIELDS_PARAMETERS(fields)) override;
#include "browserdvbservice_messages.inc"

private:
    template <typename... Values>
    int keep(frame::MsgIds& ids, const frame::TransportInfo& transport, const char* operation, const Values&... values);

    mutable std::mutex mutex;
    std::vector<Call> heard GUARDED_BY(mutex);
};
