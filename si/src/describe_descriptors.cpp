// Descriptors of PSI and SI, as libbitstream prints them, one line an entry. It reads before it compares lengths, so
// that it gets only descriptors whose inner lengths fit, with room behind them.
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
/// What the library says of descriptors, one text a line, without the lines' beginnings.
using Lines = std::vector<std::string>;

/// "    - desc 48 service type=…", "       - an item of it", "desc 48 invalid": without dashes and tag.
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

/// What a descriptor from 0x80 on is depends on the private_data_specifier before it, which is printed with it.
Lines printed(const Descriptor& descriptor, const Descriptor* specifier) {
    std::vector<std::uint8_t> loop;
    for (const Descriptor* const added : {specifier, &descriptor}) {
        if (added != nullptr) {
            loop.push_back(added->tag);
            loop.push_back(static_cast<std::uint8_t>(added->bytes.size()));
            loop.insert(loop.end(), added->bytes.begin(), added->bytes.end());
        }
    }
    // Two lengths of a byte, one behind the other, lead the library's checks so far at most.
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
