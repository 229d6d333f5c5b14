// What a test sees of the platform: the commands that were sent, and events and sections to send back.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tiny {

/// A command: its identifier, and its record with the bytes behind its carriers, field by field.
struct Sent {
    std::uint32_t message;
    std::vector<std::string> fields;
};

std::vector<Sent> sent();
/// Calls the decoder of an event with a record in memory; false when nobody registered one.
bool deliver(std::uint32_t message, const void* record);
/// Puts a section into the queue of that name; false when there is none.
bool writeSection(const std::string& queue, const std::string& session, const std::vector<std::uint8_t>& section);
/// Names of the queues that were made.
std::vector<std::string> queues();
/// Lines of the log, formatted.
std::vector<std::string> lines();

}  // namespace tiny
