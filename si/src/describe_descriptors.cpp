// Describes loops of descriptors.
#include "descriptor_table.h"
#include "layout.h"
#include "notation.h"

namespace si {

namespace {

constexpr unsigned int kTagBits = 8;
constexpr std::uint8_t kExtension = 0x7F;
constexpr std::uint8_t kPrivateDataSpecifier = 0x5F;

/// Adds the fields of a known descriptor, and all bytes if they do not fit.
void describeKnown(const KnownDescriptor& known, Bytes content, Scope scope, Bytes all, Node& node) {
    FieldInput input(content, Kind::descriptor, scope);
    readLayout(known.layout, input, node);
    if (!input.wrong.empty()) {
        node.text("wrong", input.wrong).bytes("bytes", all);
    }
}

void describeContent(const KnownDescriptor& known, Bytes content, Scope scope, Node& node) {
    const bool isExtension = known.tag == kExtension && known.scope == Scope::general && content.size != 0;
    const KnownDescriptor* const extension =
        isExtension ? knownDescriptor(Scope::extension, content.data[0], 0) : nullptr;
    if (extension == nullptr) {
        node.text("is", known.name);
        describeKnown(known, content, scope, content, node);
        return;
    }
    node.text("is", extension->name);
    node.fields.push_back(numberField("descriptor_tag_extension", content.data[0], kTagBits));
    describeKnown(*extension, {content.data + 1, content.size - 1}, scope, content, node);
}

}  // namespace

void describeDescriptors(Bytes loop, Scope scope, Node& parent) {
    FieldInput input(loop, Kind::table, scope);
    std::uint32_t specifier = 0;
    while (!input.atEnd()) {
        const std::size_t start = input.place();
        const auto tag = static_cast<std::uint8_t>(input.number("descriptor_tag", kTagBits));
        const Bytes content = input.sized("descriptor_length", kTagBits);
        if (!input.good()) {
            addUnreadable(parent, input.wrong, {loop.data + start / kTagBits, loop.size - start / kTagBits});
            return;
        }
        Node& node = parent.add("descriptor");
        node.fields.push_back(numberField("tag", tag, kTagBits));
        node.number("length", content.size);
        const KnownDescriptor* const known = knownDescriptor(scope, tag, specifier);
        if (known == nullptr) {
            node.bytes("bytes", content);
            continue;
        }
        describeContent(*known, content, scope, node);
        if (tag == kPrivateDataSpecifier && content.size == sizeof specifier) {
            specifier = static_cast<std::uint32_t>(*node.fields.back().number);
        }
    }
}

}  // namespace si
