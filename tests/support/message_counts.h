// Number of messages and nested records in the catalogue.
#pragma once

#include <cstddef>

#define NESTED(Record, fields) +1
constexpr std::size_t kNestedRecords = 0
#include "browserdvbservice_messages.inc"
    ;
#define COMMAND(identifier, operation, Message, fields) +1
constexpr std::size_t kCommands = 0
#include "browserdvbservice_messages.inc"
    ;
#define EVENT(identifier, operation, Message, decoder, fields) +1
constexpr std::size_t kEvents = 0
#include "browserdvbservice_messages.inc"
    ;
