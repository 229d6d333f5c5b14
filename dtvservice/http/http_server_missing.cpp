// For builds without libmicrohttpd: there is no HTTP server.
#include "http_server.h"

namespace dtvservice {

class HttpServer::Connections {};

std::string checkHttp() {
    return "this build has no HTTP server: libmicrohttpd was missing";
}

HttpServer::HttpServer(const HttpAddress& address, EventLoop&, Service) : address_(address), error_(checkHttp()) {}
HttpServer::~HttpServer() = default;

}  // namespace dtvservice
