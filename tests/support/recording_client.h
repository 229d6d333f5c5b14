// A client of the RPC interface that keeps every event it hears as text, "operation(value, value)": numbers in decimal,
// strings and byte vectors in hexadecimal after their length.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "browserdvbservice_interfaces.h"

class RecordingClient : public lo::browserdvbservice::ClientInterface {
public:
    struct Call {
        std::string text;
        frame::MsgIds* ids;
        frame::TransportInfo transport;
    };

    std::vector<Call> calls() const {
        const std::lock_guard<std::mutex> lock(mutex);
        return heard;
    }
    std::vector<std::string> texts() const {
        std::vector<std::string> result;
        for (const Call& call : calls()) {
            result.push_back(call.text);
        }
        return result;
    }

    /// Called inside of every event, after it was kept.
    std::function<void()> reaction;
    /// What every event returns.
    int answer = 0;

#define EVENT(identifier, operation, Message, decoder, fields)                                                    \
    int operation(frame::MsgIds& ids, const frame::TransportInfo& transport FIELDS_PARAMETERS(fields)) override { \
        return keep(ids, transport, #operation FIELDS_ARGUMENTS(fields));                                         \
    }
#include "browserdvbservice_messages.inc"

private:
    template <typename... Values>
    int keep(frame::MsgIds& ids, const frame::TransportInfo& transport, const char* operation,
             const Values&... values) {
        std::string text = operation;
        text += "(";
        [[maybe_unused]] const char* separator = "";
        ((text += separator, text += shown(values), separator = ", "), ...);
        text += ")";
        {
            const std::lock_guard<std::mutex> lock(mutex);
            heard.push_back({text, &ids, transport});
        }
        if (reaction) {
            reaction();
        }
        return answer;
    }

    template <typename Number>
    static std::string shown(Number number) {
        return std::to_string(number);
    }
    static std::string shown(const std::string& text) {
        return hexOf(text.data(), text.size());
    }
    static std::string shown(const _ovxDeserVectorU8_struct& carrier) {
        return hexOf(carrier.data, carrier.count);
    }

    static std::string hexOf(const void* bytes, std::size_t length) {
        static const char* const kDigits = "0123456789ABCDEF";
        std::string text = std::to_string(length) + ":";
        for (std::size_t index = 0; index < length; ++index) {
            const unsigned char byte = static_cast<const unsigned char*>(bytes)[index];
            text += kDigits[byte >> 4U];
            text += kDigits[byte & 0x0FU];
        }
        return text;
    }

    mutable std::mutex mutex;  // guards heard
    std::vector<Call> heard;
};
