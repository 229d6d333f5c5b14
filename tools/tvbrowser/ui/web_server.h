// WebServer: the page for people, on loopback: the screen, a remote control, the applications, a log. It also serves
// the sample application.
// Threads: the main one; pictures are encoded on threads of their own.
// Blocks:  never.
// Fails:   the constructor throws std::runtime_error when the port is taken. Requests from pages of other hosts are
//          refused, so that no page that a desktop browser shows can use the television.
#pragma once

#include <libsoup/soup.h>

#include <cstdint>
#include <deque>
#include <map>
#include <string>

#include "television.h"

namespace tvbrowser {

class WebServer {
public:
    /// `folder`: the files to serve. `port`: 0 for any.
    WebServer(Television& newTelevision, const std::string& folder, std::uint16_t port);
    WebServer(const WebServer&) = delete;
    WebServer& operator=(const WebServer&) = delete;
    ~WebServer();

    /// "http://127.0.0.1:8080/"
    std::string url() const;
    /// Adds a line to the log.
    void log(const std::string& line);

private:
    struct File {
        std::string type;
        std::string bytes;
    };
    struct Line {
        std::uint64_t number;
        std::string text;
    };
    static void onRequest(SoupServer*, SoupServerMessage* message, const char* path, GHashTable* query,
                          gpointer server);
    void answer(SoupServerMessage* message, const std::string& path, GHashTable* query);
    void sendScreen(SoupServerMessage* message);
    bool act(const std::string& path, const std::string& value);
    std::string stateText(GHashTable* query) const;
    void readFiles(const std::string& folder);

    Television& television;
    SoupServer* server = nullptr;
    std::map<std::string, File> files;  ///< by path
    std::deque<Line> lines;
    std::uint64_t lineCount = 0;
    std::string picture;                 ///< the newest PNG
    std::uint64_t pictureVersion = ~0U;  ///< of the screen
};

}  // namespace tvbrowser
