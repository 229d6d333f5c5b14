// The test's access to the platform: reads the sent commands, and sends events and sections.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tiny {

/// A command: its identifier, and the fields of its record, with the bytes of carriers.
struct Sent {
    std::uint32_t message;
    std::vector<std::string> fields;
};

std::vector<Sent> sent();
/// Calls the decoder of an event with a record in memory; false when nobody registered one.
bool deliver(std::uint32_t message, const void* record);
/// Puts a section into the queue of that name; false when there is none.
bool writeSection(const std::string& queue, const std::string& session, const std::vector<std::uint8_t>& section);
/// Names of the created queues.
std::vector<std::string> queues();
/// Lines of the log, formatted.
std::vector<std::string> lines();

}  // namespace tiny
