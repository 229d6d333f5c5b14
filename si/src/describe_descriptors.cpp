// Describes descriptors of PSI and SI with the lines that libbitstream prints. The library reads before it compares
// lengths, so it gets only descriptors whose inner lengths fit, with spare bytes after them.
#include <bitstream/dvb/si.h>
#include <bitstream/dvb/si_print.h>
#include <bitstream/mpeg/psi.h>
#include <bitstream/mpeg/psi/descs_print.h>

#include <array>
#include <cstdarg>
#include <cstring>

#include "describe.h"
#include "descriptor_checks.h"
#include "text_conversion.h"

namespace si {

namespace {

constexpr std::uint8_t kPrivateDataSpecifier = 0x5F;
/// The lines that the library prints for descriptors, without the beginnings of the lines.
using Lines = std::vector<std::string>;

/// Removes dashes and tag from lines such as "    - desc 48 service type=…", "       - item of a descriptor" and
/// "desc 48 invalid".
std::string withoutBeginning(std::string line) {
    constexpr std::size_t kTag = sizeof "desc 48 " - 1;
    line.erase(0, line.find_first_not_of(" -"));
    return line.rfind("desc ", 0) == 0 && line.size() >= kTag ? line.substr(kTag) : line;
}

void takeLine(void* opaque, const char* format, ...) __attribute__((format(printf, 2, 3)));
void takeLine(void* opaque, const char* format, ...) {
    constexpr std::size_t kLongest = 2048;
    std::array<char, kLongest> line{};
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(line.data(), line.size(), format, arguments);
    va_end(arguments);
    static_cast<Lines*>(opaque)->push_back(withoutBeginning(line.data()));
}

char* takeText(void*, const char* encoding, char* text, std::size_t length) {
    return strdup(toUtf8In(encoding, {reinterpret_cast<const std::uint8_t*>(text), length}).c_str());
}

/// The meaning of tags from 0x80 on depends on the private_data_specifier before them, so it is printed with them.
Lines printed(const Descriptor& descriptor, const Descriptor* specifier) {
    std::vector<std::uint8_t> loop;
    for (const Descriptor* const added : {specifier, &descriptor}) {
        if (added != nullptr) {
            loop.push_back(added->tag);
            loop.push_back(static_cast<std::uint8_t>(added->bytes.size()));
            loop.insert(loop.end(), added->bytes.begin(), added->bytes.end());
        }
    }
    // The library may read beyond the descriptor, but by less than this: it adds up at most two lengths of one byte.
    constexpr std::size_t kRoom = 1024;
    const auto length = static_cast<std::uint16_t>(loop.size());
    loop.resize(loop.size() + kRoom);
    Lines lines;
    descl_print(loop.data(), length, takeLine, &lines, takeText, nullptr, PRINT_TEXT);
    if (specifier != nullptr && !lines.empty()) {
        lines.erase(lines.begin());
    }
    return lines;
}

bool isKnown(const Lines& lines) {
    return !lines.empty() && lines[0].rfind("unknown", 0) != 0 && lines[0].rfind("invalid", 0) != 0;
}

}  // namespace

void describeDescriptors(Bytes loop, Node& parent) {
    constexpr std::uint8_t kFirstPrivate = 0x80;
    constexpr std::size_t kSpecifierSize = 4;
    Descriptor specifier;
    forEachDescriptor(loop, parent, [&specifier](const Descriptor& descriptor, Node& node) {
        const bool underSpecifier = descriptor.tag >= kFirstPrivate && specifier.bytes.size() == kSpecifierSize;
        const Lines lines =
            innerLengthsFit(descriptor) ? printed(descriptor, underSpecifier ? &specifier : nullptr) : Lines();
        if (!isKnown(lines)) {
            node.bytes("bytes", descriptor.bytes);
        } else {
            for (const std::string& line : lines) {
                node.text("is", line);
            }
        }
        if (descriptor.tag == kPrivateDataSpecifier) {
            specifier = descriptor;
        }
    });
}

}  // namespace si
