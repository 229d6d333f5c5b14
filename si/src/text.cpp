// Converts texts: libbitstream identifies the character table, iconv converts.
#include "si/text.h"

#include <bitstream/dvb/si.h>
#include <iconv.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

namespace si {

namespace {

constexpr const char* kDefaultTable = "ISO6937";
constexpr const char* kReplacement = "\xEF\xBF\xBD";

/// Number of bytes to skip where the conversion fails. Skipping one byte of a 16-bit unit would misalign all later
/// units.
std::size_t unitSize(const std::string& encoding) {
    return encoding.rfind("UTF-16", 0) == 0 || encoding.rfind("UCS-2", 0) == 0 ? 2 : 1;
}

/// Converts to UTF-8. A unit that cannot be converted becomes a replacement character.
std::string convert(const char* encoding, Bytes text) {
    const iconv_t converter = iconv_open("UTF-8", encoding);
    if (converter == reinterpret_cast<iconv_t>(-1)) {
        return std::string(reinterpret_cast<const char*>(text.data), text.size);
    }
    std::string result;
    auto* in = reinterpret_cast<char*>(const_cast<std::uint8_t*>(text.data));
    std::size_t left = text.size;
    while (left != 0) {
        char buffer[256];
        char* out = buffer;
        std::size_t room = sizeof buffer;
        const std::size_t converted = iconv(converter, &in, &left, &out, &room);
        result.append(buffer, sizeof buffer - room);
        if (converted == static_cast<std::size_t>(-1) && errno != E2BIG) {
            result += kReplacement;
            const std::size_t skipped = std::min(left, unitSize(encoding));
            in += skipped;
            left -= skipped;
        }
    }
    iconv_close(converter);
    return result;
}

/// Removes emphasis marks and replaces line breaks by blanks. They are 0x86, 0x87 and 0x8A in one-byte tables and
/// U+E0xx in others; iconv may turn them into C1 controls.
std::string withoutControls(const std::string& text) {
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const auto byte = static_cast<unsigned char>(text[at]);
        const auto next = static_cast<unsigned char>(at + 1 < text.size() ? text[at + 1] : 0);
        const auto third = static_cast<unsigned char>(at + 2 < text.size() ? text[at + 2] : 0);
        if (byte == 0xC2 && next >= 0x80 && next < 0xA0) {
            result += next == 0x8A ? " " : "";
            at += 1;
        } else if (byte == 0xEE && next == 0x82 && third >= 0x80 && third < 0xA0) {
            result += third == 0x8A ? " " : "";
            at += 2;
        } else if (byte >= 0x20 && byte != 0x7F) {
            result += text[at];
        } else if (byte == '\n' || byte == '\r') {
            result += ' ';
        }
    }
    return result;
}

/// Removes the marks of one-byte tables, such as the default table. This must happen before the conversion, because
/// iconv does not know them.
std::vector<std::uint8_t> withoutMarks(Bytes text) {
    std::vector<std::uint8_t> kept;
    for (std::size_t at = 0; at < text.size; ++at) {
        const std::uint8_t byte = text.data[at];
        if (byte == 0x8A) {
            kept.push_back(' ');
        } else if (byte < 0x80 || byte >= 0xA0) {
            kept.push_back(byte);
        }
    }
    return kept;
}

bool hasWideUnits(const std::string& encoding) {
    return encoding.find("UTF") != std::string::npos || encoding.find("UCS") != std::string::npos ||
           encoding.find("BIG5") != std::string::npos || encoding.find("GB") != std::string::npos ||
           encoding.find("KSC") != std::string::npos || encoding.find("10646") != std::string::npos;
}

/// Converts the bytes after a text's character table selector. `encoding` is iconv's name of the table.
std::string toUtf8In(const char* encoding, Bytes text) {
    if (hasWideUnits(encoding)) {
        return withoutControls(convert(encoding, text));
    }
    return withoutControls(convert(encoding, withoutMarks(text)));
}

/// Letters, digits and the like are the same bytes in the default table and in UTF-8. Most texts have nothing else, and
/// to begin a conversion takes longer than all the rest.
bool isAscii(Bytes text) {
    return std::all_of(text.data, text.data + text.size, [](std::uint8_t byte) { return byte >= 0x20 && byte < 0x7F; });
}

}  // namespace

std::string toUtf8(Bytes text) {
    if (isAscii(text)) {
        return std::string(reinterpret_cast<const char*>(text.data), text.size);
    }
    const std::uint8_t* first = text.data;
    std::size_t length = text.size;
    const bool sixteenBit = length != 0 && (first[0] == 0x11 || first[0] == 0x14);
    const char* const encoding = length == 0 ? nullptr : dvb_string_get_encoding(&first, &length, kDefaultTable);
    if (sixteenBit) {
        // Both tables are big-endian in broadcasts; iconv's default byte order may differ.
        return toUtf8In("UTF-16BE", {first, length});
    }
    return toUtf8In(encoding == nullptr ? kDefaultTable : encoding, {first, length});
}

}  // namespace si
