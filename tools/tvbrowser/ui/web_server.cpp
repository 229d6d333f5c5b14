// The page for people, by libsoup.
#include "web_server.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>
#include <thread>

#include "main_loop.h"

namespace tvbrowser {

namespace {

constexpr std::size_t kMostLines = 500;
constexpr const char* kFirstFile = "/index.html";

std::string typeOf(const std::filesystem::path& file) {
    static const std::map<std::string, std::string> kTypes{{".html", "text/html; charset=utf-8"},
                                                           {".css", "text/css; charset=utf-8"},
                                                           {".js", "text/javascript; charset=utf-8"},
                                                           {".svg", "image/svg+xml"},
                                                           {".png", "image/png"}};
    const auto found = kTypes.find(file.extension().string());
    return found == kTypes.end() ? "application/octet-stream" : found->second;
}

/// Whether a URL's host, or a Host header's, is this machine by its own names. Behind a tunnel the port may be another.
bool isHere(GUri* url) {
    static const std::set<std::string> kNames{"127.0.0.1", "localhost"};
    return url != nullptr && g_uri_get_host(url) != nullptr && kNames.count(g_uri_get_host(url)) != 0;
}

bool isHere(const std::string& text) {
    GUri* const url = g_uri_parse(text.c_str(), G_URI_FLAGS_NONE, nullptr);
    const bool here = isHere(url);
    if (url != nullptr) {
        g_uri_unref(url);
    }
    return here;
}

/// A page of another host must neither read nor do anything here: not by its own name for this machine, and not by a
/// request across origins.
bool isFromHere(SoupServerMessage* message) {
    SoupMessageHeaders* const headers = soup_server_message_get_request_headers(message);
    const char* const host = soup_message_headers_get_one(headers, "Host");
    const char* const origin = soup_message_headers_get_one(headers, "Origin");
    return host != nullptr && isHere(std::string("http://") + host) && (origin == nullptr || isHere(origin));
}

void respond(SoupServerMessage* message, guint status, const std::string& type, const std::string& bytes) {
    soup_server_message_set_status(message, status, nullptr);
    soup_message_headers_append(soup_server_message_get_response_headers(message), "Cache-Control", "no-store");
    soup_server_message_set_response(message, type.c_str(), SOUP_MEMORY_COPY, bytes.data(), bytes.size());
}

std::string bodyOf(SoupServerMessage* message) {
    const SoupMessageBody* const body = soup_server_message_get_request_body(message);
    return body->data == nullptr ? "" : std::string(body->data, static_cast<std::size_t>(body->length));
}

}  // namespace

WebServer::WebServer(Television& newTelevision, const std::string& folder, std::uint16_t port)
    : television(newTelevision), server(soup_server_new("server-header", "tvbrowser", nullptr)) {
    readFiles(folder);
    soup_server_add_handler(server, nullptr, onRequest, this, nullptr);
    GError* error = nullptr;
    if (soup_server_listen_local(server, port, SOUP_SERVER_LISTEN_IPV4_ONLY, &error) == FALSE) {
        const std::string reason = error->message;
        g_error_free(error);
        g_object_unref(server);
        throw std::runtime_error("cannot serve on port " + std::to_string(port) + ": " + reason);
    }
}

WebServer::~WebServer() {
    g_object_unref(server);
}

std::string WebServer::url() const {
    GSList* const urls = soup_server_get_uris(server);
    const int port = g_uri_get_port(static_cast<GUri*>(urls->data));
    g_slist_free_full(urls, [](gpointer url) { g_uri_unref(static_cast<GUri*>(url)); });
    return "http://127.0.0.1:" + std::to_string(port) + "/";
}

void WebServer::log(const std::string& line) {
    lines.push_back({++lineCount, line});
    if (lines.size() > kMostLines) {
        lines.pop_front();
    }
}

void WebServer::onRequest(SoupServer*, SoupServerMessage* message, const char* path, GHashTable* query,
                          gpointer server) {
    static_cast<WebServer*>(server)->answer(message, path, query);
}

void WebServer::answer(SoupServerMessage* message, const std::string& path, GHashTable* query) {
    const bool isPost = g_strcmp0(soup_server_message_get_method(message), "POST") == 0;
    const auto file = files.find(path.back() == '/' ? path + (kFirstFile + 1) : path);
    if (!isFromHere(message)) {
        respond(message, SOUP_STATUS_FORBIDDEN, "text/plain", "only pages of this machine may use the television\n");
    } else if (isPost) {
        const bool done = act(path, bodyOf(message));
        respond(message, done ? SOUP_STATUS_OK : SOUP_STATUS_BAD_REQUEST, "text/plain",
                done ? "" : "no such command\n");
    } else if (path == "/screen.png") {
        sendScreen(message);
    } else if (path == "/state") {
        respond(message, SOUP_STATUS_OK, "application/json", stateText(query));
    } else if (file != files.end()) {
        respond(message, SOUP_STATUS_OK, file->second.type, file->second.bytes);
    } else {
        respond(message, SOUP_STATUS_NOT_FOUND, "text/plain", "no such page\n");
    }
}

/// Encoding takes too long for the main loop, which has the keys and the broadcast to see to.
void WebServer::sendScreen(SoupServerMessage* message) {
    const std::uint64_t version = television.screen().version();
    if (version == pictureVersion) {
        respond(message, SOUP_STATUS_OK, "image/png", picture);
        return;
    }
    g_object_ref(message);
    soup_server_message_pause(message);
    std::thread([this, message, version, frame = television.screen().frame()] {
        postToMainLoop([this, message, version, png = pngOf(frame)] {
            picture = png;
            pictureVersion = version;
            respond(message, SOUP_STATUS_OK, "image/png", picture);
            soup_server_message_unpause(message);
            g_object_unref(message);
        });
    }).detach();
}

bool WebServer::act(const std::string& path, const std::string& value) {
    if (path == "/key") {
        return television.press(value);
    }
    const std::optional<ApplicationId> id = parseApplicationId(value);
    return path == "/start" && id && television.start(*id);
}

std::string WebServer::stateText(GHashTable* query) const {
    const auto* const after =
        query == nullptr ? nullptr : static_cast<const char*>(g_hash_table_lookup(query, "after"));
    const guint64 last = after == nullptr ? 0 : g_ascii_strtoull(after, nullptr, 10);
    nlohmann::json state = television.state();
    state["lines"] = nlohmann::json::array();
    state["lineCount"] = lineCount;
    state["screen"] = television.screen().version();
    for (const Line& line : lines) {
        if (line.number > last) {
            state["lines"].push_back(line.text);
        }
    }
    return state.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

void WebServer::readFiles(const std::string& folder) {
    std::error_code missing;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder, missing)) {
        if (entry.is_regular_file()) {
            std::ifstream input(entry.path(), std::ios::binary);
            const std::string path = "/" + entry.path().lexically_relative(folder).generic_string();
            files[path] = {typeOf(entry.path()), {std::istreambuf_iterator<char>(input), {}}};
        }
    }
    if (missing || files.count(kFirstFile) == 0) {
        throw std::runtime_error(folder + " does not have the page for people");
    }
}

}  // namespace tvbrowser
