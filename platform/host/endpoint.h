// Endpoints: the socket address of a service name, seen from either side.
// Threads: the one that starts or runs an I/O service.
// Blocks:  never.
// Fails:   with a line; connecting to a service that is not there is no failure worth one.
#pragma once

#include <string>

namespace host {

/// A connected, non-blocking socket to the service of that name, or -1.
int connectToService(const std::string& serviceName);

/// The listening end of a service name. At most one process holds a name; what a killed one left behind is taken over.
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
    /// A connected, non-blocking socket of a client that runs as our user, or -1.
    int accept();

private:
    int lockFile = -1;
    int listening = -1;
    std::string path;
};

}  // namespace host
