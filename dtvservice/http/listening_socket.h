// The socket that the HTTP server listens at.
// Threads: any.
// Blocks:  never.
// Fails:   -1, and a text that says what is wrong.
#pragma once

#include <string>

#include "http_address.h"

namespace dtvservice {

/// A listening TCP socket, which the caller closes. Sets the port that the system has chosen for 0.
int listenAt(HttpAddress& address, std::string& error);

}  // namespace dtvservice
