// The wire image of a message from the values of its operation, as the platform sends it: the fields in network byte
// order, each carrier as (length, 0), then the carriers' bytes. Other code sees a message only before or behind the
// platform, so what records messages makes their images itself.
// Threads: any; nothing is shared.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "browserdvbservice_records.h"

namespace dtvservice {

class MessageImage {
public:
    template <typename... Values>
    static std::string of(const Values&... values) {
        MessageImage image;
        (image.add(values), ...);
        if (image.fields.empty()) {
            image.fields += '\0';  // a message without fields is one zero byte
        }
        return image.fields + image.carried;
    }

private:
    template <typename Number, typename = std::enable_if_t<std::is_integral_v<Number> || std::is_enum_v<Number>>>
    void add(Number number) {
        constexpr unsigned int kBitsOfAByte = 8;
        for (std::size_t left = sizeof number; left > 0; --left) {
            fields += static_cast<char>(static_cast<std::uint64_t>(number) >> ((left - 1) * kBitsOfAByte) & 0xFFU);
        }
    }
    void add(const std::string& text) { addCarrier(text); }
    void add(const std::vector<unsigned char>& bytes) { addCarrier(asText(bytes.data(), bytes.size())); }
    void add(const _ovxDeserVectorU8_struct& bytes) { addCarrier(asText(bytes.data, bytes.count)); }
#define IMAGE_FIELD(type, name) add(record.name);
#define NESTED(Record, fields)                              \
    void add(const lo::browserdvbservice::Record& record) { \
        FIELDS_EACH(IMAGE_FIELD, fields)                    \
    }
#include "browserdvbservice_messages.inc"
#undef IMAGE_FIELD

    static std::string_view asText(const std::uint8_t* bytes, std::size_t length) {
        return {reinterpret_cast<const char*>(bytes), length};
    }
    void addCarrier(std::string_view bytes) {
        add(static_cast<std::uint32_t>(bytes.size()));
        add(std::uint32_t{0});
        carried += bytes;
    }

    std::string fields;
    std::string carried;
};

}  // namespace dtvservice
