// The functions that describe the parts of a section, shared between their files.
#pragma once

#include <string>

#include "si/description.h"

namespace si {

/// Each adds to the table's node; false with the reason if the section is malformed.
bool describeAit(Bytes section, Node& node, std::string& error);
bool describeDsmccMessage(Bytes section, Node& node, std::string& error);
bool describeStreamDescriptors(Bytes section, Node& node, std::string& error);

/// Walks a loop of descriptors. Bytes at its end that do not fit become a node "unreadable".
template <typename Describe>
void forEachDescriptor(Bytes loop, Node& parent, Describe describe) {
    Descriptors descriptors;
    std::size_t read = 0;
    readDescriptors(loop, descriptors);
    for (const Descriptor& descriptor : descriptors) {
        Node& node = parent.add("descriptor");
        node.hex("tag", descriptor.tag, 2).number("length", descriptor.bytes.size());
        describe(descriptor, node);
        read += 2 + descriptor.bytes.size();
    }
    if (read < loop.size) {
        parent.add("unreadable").bytes("bytes", {loop.data + read, loop.size - read});
    }
}

}  // namespace si
