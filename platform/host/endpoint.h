// Endpoints: the socket of a service name, from the client's and from the service's side.
// Threads: the one that starts or runs an I/O service.
// Blocks:  never.
// Fails:   open() with a line; connecting and accepting with a text, because both are tried again and again.
#pragma once

#include <string>

namespace host {

/// A connected socket to the service of that name, whose receive waits, or -1. A service that is not running is normal;
/// other problems are told in the text.
int connectToService(const std::string& serviceName, std::string& problem);

/// The listening end of a service name. Only one process holds a name. It replaces the socket that a killed process
/// left behind.
class ServiceEndpoint {
public:
    ServiceEndpoint() = default;
    ServiceEndpoint(const ServiceEndpoint&) = delete;
    ServiceEndpoint& operator=(const ServiceEndpoint&) = delete;
    ~ServiceEndpoint();

    /// 0, or a negative error number.
    int open(const std::string& serviceName);
    void close();
    /// The listening socket, or -1.
    int socket() const { return listening; }
    /// A connected socket of a client that runs as our own user, whose receive waits, or -1. The text tells why the
    /// clients must wait, for example because the process has no more descriptors; it is empty if only this client is
    /// refused.
    int accept(std::string& problem);

private:
    int lockFile = -1;
    int listening = -1;
    std::string path;
};

}  // namespace host
