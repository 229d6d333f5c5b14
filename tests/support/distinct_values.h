// Values for the parameters of every message, each different, and a note of all of them in the order of the message's
// fields. A nested record counts as its fields.
#pragma once

#include <deque>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "browserdvbservice_interfaces.h"
#include "message_fields.h"

class DistinctValues {
public:
    /// In the order of the values that were made.
    std::vector<message_fields::Value> noted;

    /// One value for each parameter of an operation.
    template <typename Interface, typename... Parameters>
    std::tuple<std::decay_t<Parameters>...> valuesFor(int (Interface::*)(frame::MsgIds&, const frame::TransportInfo&,
                                                                         Parameters...)) {
        return std::tuple<std::decay_t<Parameters>...>{next(Type<std::decay_t<Parameters>>())...};
    }
    /// Calls the operation with one value for each parameter.
    template <typename Interface, typename... Parameters>
    int call(Interface& target, int (Interface::*operation)(frame::MsgIds&, const frame::TransportInfo&, Parameters...),
             frame::MsgIds ids = {}) {
        const auto values = valuesFor(operation);
        return std::apply(
            [&](const auto&... each) { return (target.*operation)(ids, frame::TransportInfo(), each...); }, values);
    }

private:
    template <typename Value>
    struct Type {};

    /// Each byte is different, and the highest bit is set: a wrong order, width or sign shows.
    template <typename Number>
    Number next(Type<Number>) {
        constexpr std::uint64_t kFirst = 0x8192A3B4C5D6E7F8;
        constexpr std::uint64_t kStep = 0x0101010101010101;
        constexpr unsigned int kNamed = 3;
        ++count;
        const auto value =
            std::is_enum_v<Number> ? static_cast<Number>(count % kNamed) : static_cast<Number>(kFirst + count * kStep);
        noted.push_back(message_fields::valueOf(value));
        return value;
    }
    std::string next(Type<std::string>) {
        ++count;
        noted.emplace_back("value " + std::to_string(count) + std::string(count, '.'));
        return std::get<std::string>(noted.back());
    }
    std::vector<unsigned char> next(Type<std::vector<unsigned char>>) {
        const std::string text = next(Type<std::string>());
        return {text.begin(), text.end()};
    }
    _ovxDeserVectorU8_struct next(Type<_ovxDeserVectorU8_struct>) {
        kept.push_back(next(Type<std::vector<unsigned char>>()));
        return {static_cast<std::uint32_t>(kept.back().size()), kept.back().data()};
    }
#define NEXT_FIELD(type, name) record.name = next(Type<decltype(record.name)>());
#define NESTED(Record, fields)                                                \
    lo::browserdvbservice::Record next(Type<lo::browserdvbservice::Record>) { \
        lo::browserdvbservice::Record record;                                 \
        FIELDS_EACH(NEXT_FIELD, fields)                                       \
        return record;                                                        \
    }
#include "browserdvbservice_messages.inc"
#undef NEXT_FIELD

    std::size_t count = 0;
    std::deque<std::vector<unsigned char>> kept;  // of byte vectors, which only point to their bytes
};
