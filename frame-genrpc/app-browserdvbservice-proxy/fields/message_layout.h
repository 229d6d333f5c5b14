// Where the fields of a message are in its wire image, and their values. All of it follows from the catalogue's list of
// types, so programs that only look at messages need no records of them.
// Threads: any; all data is constant.
// Blocks:  never.
// Fails:   readImage() with a text that names the error and its position; never reads outside the image.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "message_fields.h"

namespace message_fields {

/// A field in the wire image. A nested record's fields stand in its place.
struct Place {
    const Field* field;
    std::size_t offset;
    std::size_t width;  ///< bytes at the offset
    bool isSigned;
    bool isCarrier;  ///< its length and a zero word are at the offset; its bytes follow the fields
};

/// The message of this identifier; null for an unknown one.
const Message* findMessage(std::uint32_t identifier);
/// The fields of a message in the order of the image.
std::vector<Place> layoutOf(const Message& message);
/// The bytes of all fields; 1 for a message without fields.
std::size_t fixedSizeOf(const std::vector<Place>& layout);

/// The values of an image. False, with the reason, where it is not one of the message; `values` then has those before.
bool readImage(const Message& message, std::string_view image, std::vector<FieldValue>& values, std::string& error);

}  // namespace message_fields
