// The documents that are generated from the lists of messages, fields and operations.
// Threads: one.
// Blocks:  while writing.
#pragma once

#include <ostream>
#include <string>

namespace message_documents {

/// The reference of all messages, in Markdown.
void writeMarkdown(std::ostream& output);
/// The JSON Schema: `frame` is a schema with what no list has; events, operations and values are added. False, with the
/// reason, when the frame is none.
bool writeSchema(const std::string& frame, std::ostream& output, std::string& error);
/// A dissector in Lua for protocol analysers: `frame` is its part that no list has.
void writeDissector(const std::string& frame, std::ostream& output);

}  // namespace message_documents
