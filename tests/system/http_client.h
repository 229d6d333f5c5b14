// A client of the service's HTTP server: one request on a connection of its own.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

class HttpClient {
public:
    /// `receiveBuffer` in bytes; 0 for the system's choice.
    explicit HttpClient(std::uint16_t port, int receiveBuffer = 0) : descriptor(socket(AF_INET, SOCK_STREAM, 0)) {
        if (receiveBuffer != 0) {
            setsockopt(descriptor, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
        }
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        inet_pton(AF_INET, "127.0.0.1", &address.sin_addr);
        if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
            hasEnded_ = true;
        }
    }
    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;
    ~HttpClient() { close(descriptor); }

    /// Asks by HTTP/1.0, so that the content comes as it is, up to the end of the connection.
    HttpClient& ask(const std::string& path, const std::string& host = "127.0.0.1", const std::string& method = "GET") {
        const std::string request =
            method + " " + path + " HTTP/1.0\r\n" + (host.empty() ? "" : "Host: " + host + "\r\n") + "\r\n";
        hasEnded_ = send(descriptor, request.data(), request.size(), MSG_NOSIGNAL) < 0;
        return *this;
    }
    /// Reads what has come, waiting for it if nothing has. False at the end.
    bool read() {
        char bytes[65536];
        const ssize_t count = recv(descriptor, bytes, sizeof bytes, 0);
        hasEnded_ = count <= 0;
        if (!hasEnded_) {
            received.append(bytes, static_cast<std::size_t>(count));
        }
        return !hasEnded_;
    }
    HttpClient& readAll() {
        while (read()) {
        }
        return *this;
    }
    bool hasEnded() const { return hasEnded_; }
    /// 0 if there is no complete header.
    int status() const {
        return contentAt() == std::string::npos ? 0 : std::atoi(received.c_str() + received.find(' '));
    }
    std::string header() const { return received.substr(0, contentAt()); }
    std::string content() const {
        return contentAt() == std::string::npos ? std::string() : received.substr(contentAt());
    }

private:
    std::size_t contentAt() const {
        const std::size_t end = received.find("\r\n\r\n");
        return end == std::string::npos ? end : end + 4;
    }

    int descriptor;
    bool hasEnded_ = false;
    std::string received;
};
