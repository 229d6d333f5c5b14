// What both sides of the measurements without the library agree on.
#pragma once

#include <sys/socket.h>

#include <boost/asio/generic/seq_packet_protocol.hpp>
#include <cstddef>

namespace bench {

constexpr std::size_t kShort = 64;  // bytes of a question, and of an answer without its text
constexpr std::size_t kLargest = std::size_t{64} << 10U;

inline const boost::asio::generic::seq_packet_protocol kPlainProtocol{AF_UNIX, 0};

constexpr const char* kBusObject = "/answers";
constexpr const char* kBusInterface = "bench.Answers";

}  // namespace bench
