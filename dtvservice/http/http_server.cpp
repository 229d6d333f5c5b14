// Serves HTTP by libmicrohttpd.
#include "http_server.h"

#include <microhttpd.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstring>
#include <map>
#include <nlohmann/json.hpp>

#include "listening_socket.h"
#include "loop_question.h"
#include "stream_readers.h"
#include "ts_packet.h"

namespace dtvservice {

using nlohmann::json;

namespace {

constexpr unsigned int kMostConnections = 32;
/// Seconds that a connection may take nothing.
constexpr unsigned int kLongestPause = 30;
constexpr std::size_t kBlock = 65536;
constexpr const char* kText = "text/plain; charset=utf-8";

/// What a request gets.
struct Page {
    unsigned int status = MHD_HTTP_OK;
    std::string type;
    std::string content;
};

Page refusal(unsigned int status, const std::string& text) {
    return {status, kText, text + "\n"};
}

/// Sends the response, which it frees.
MHD_Result send(MHD_Connection* connection, unsigned int status, MHD_Response* response, const std::string& type) {
    if (response == nullptr) {
        return MHD_NO;
    }
    MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE, type.c_str());
    MHD_add_response_header(response, MHD_HTTP_HEADER_CACHE_CONTROL, "no-store");
    MHD_add_response_header(response, "X-Content-Type-Options", "nosniff");
    const MHD_Result result = MHD_queue_response(connection, status, response);
    MHD_destroy_response(response);
    return result;
}

MHD_Result send(MHD_Connection* connection, Page page) {
    return send(connection, page.status,
                MHD_create_response_from_buffer(page.content.size(), page.content.data(), MHD_RESPMEM_MUST_COPY),
                page.type);
}

std::size_t writeNullPacket(char* to) {
    constexpr std::array<unsigned char, 4> kHeader = {broadcast::kSyncByte, 0x1F, 0xFF, 0x10};
    std::memset(to, 0xFF, broadcast::kPacketSize);
    std::memcpy(to, kHeader.data(), kHeader.size());
    return broadcast::kPacketSize;
}

}  // namespace

class HttpServer::Connections {
public:
    Connections(HttpAddress newAddress, EventLoop& newLoop, Service newService)
        : address(std::move(newAddress)), loop(newLoop), service(std::move(newService)) {}
    Connections(const Connections&) = delete;
    Connections& operator=(const Connections&) = delete;
    ~Connections() {
        isEnding = true;
        readers.endAll();
        if (daemon != nullptr) {
            MHD_stop_daemon(daemon);
        }
    }

    /// False if the library refuses, for example for want of threads. Takes the listening socket.
    bool start(int listening) {
        daemon = MHD_start_daemon(MHD_USE_INTERNAL_POLLING_THREAD | MHD_USE_THREAD_PER_CONNECTION | MHD_USE_POLL, 0,
                                  nullptr, nullptr, &Connections::answer, this, MHD_OPTION_LISTEN_SOCKET, listening,
                                  MHD_OPTION_CONNECTION_LIMIT, kMostConnections, MHD_OPTION_CONNECTION_TIMEOUT,
                                  kLongestPause, MHD_OPTION_END);
        return daemon != nullptr;
    }

private:
    /// A reader of the stream, as long as its connection.
    struct Reader {
        Connections& connections;
        std::shared_ptr<PacketQueue> queue;
    };

    static MHD_Result answer(void* self, MHD_Connection* connection, const char* path, const char* method, const char*,
                             const char*, std::size_t*, void**) {
        return static_cast<Connections*>(self)->answer(connection, path, method);
    }
    /// In silence a null packet comes every second, so that a connection that has gone is noticed.
    static ssize_t read(void* self, std::uint64_t, char* to, std::size_t most) {
        PacketQueue& queue = *static_cast<Reader*>(self)->queue;
        const std::size_t count = queue.take(to, most, std::chrono::seconds(1));
        if (count != 0) {
            return static_cast<ssize_t>(count);
        }
        return queue.isEnded() || most < broadcast::kPacketSize ? MHD_CONTENT_READER_END_OF_STREAM
                                                                : static_cast<ssize_t>(writeNullPacket(to));
    }
    static void leave(void* self) {
        const std::unique_ptr<Reader> reader(static_cast<Reader*>(self));
        reader->connections.readers.remove(reader->queue);
    }

    MHD_Result answer(MHD_Connection* connection, const std::string& path, const std::string& method) {
        const char* const host = MHD_lookup_connection_value(connection, MHD_HEADER_KIND, MHD_HTTP_HEADER_HOST);
        if (host == nullptr || !address.isMeant(host)) {
            return send(connection, refusal(MHD_HTTP_FORBIDDEN, "this server has another name"));
        }
        if (method != MHD_HTTP_METHOD_GET && method != MHD_HTTP_METHOD_HEAD) {
            return send(connection, refusal(MHD_HTTP_METHOD_NOT_ALLOWED, "only GET and HEAD"));
        }
        if (path == "/stream.ts") {
            return method == MHD_HTTP_METHOD_GET ? stream(connection)
                                                 : send(connection, Page{MHD_HTTP_OK, "video/mp2t", ""});
        }
        return send(connection, page(path));
    }

    MHD_Result stream(MHD_Connection* connection) {
        std::shared_ptr<PacketQueue> queue = readers.add();
        if (queue == nullptr) {
            return send(connection, refusal(MHD_HTTP_SERVICE_UNAVAILABLE,
                                            std::to_string(kMostReaders) + " readers have the stream already"));
        }
        loop.post([this, queue] { service.join(queue); });
        auto reader = std::make_unique<Reader>(Reader{*this, std::move(queue)});
        MHD_Response* const response =
            MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, kBlock, &Connections::read, reader.get(), &leave);
        if (response == nullptr) {
            readers.remove(reader->queue);
            return MHD_NO;
        }
        static_cast<void>(reader.release());  // leave() frees it
        return send(connection, MHD_HTTP_OK, response, "video/mp2t");
    }

    Page page(const std::string& path) {
        using Make = Page (Connections::*)();
        static const std::map<std::string, Make> kPages = {{"/channels.json", &Connections::channels},
                                                           {"/epg.json", &Connections::guideAsJson},
                                                           {"/epg.xml", &Connections::guideAsXmltv}};
        const auto found = kPages.find(path);
        return found == kPages.end()
                   ? refusal(MHD_HTTP_NOT_FOUND, "there are /stream.ts, /channels.json, /epg.json and /epg.xml")
                   : (this->*found->second)();
    }
    /// Without the inputs, which name files of this machine.
    Page channels() {
        const json answered = ask({{"command", "channels"}});
        return {MHD_HTTP_OK, "application/json", json{{"channels", answered.value("channels", json::array())}}.dump()};
    }
    Page guideAsJson() {
        const json answered = ask({{"command", "epg"}});
        return {MHD_HTTP_OK, "application/json", json{{"services", answered.value("services", json::array())}}.dump()};
    }
    Page guideAsXmltv() {
        const json answered = ask({{"command", "epg"}, {"format", "xmltv"}});
        return {MHD_HTTP_OK, "application/xml", answered.value("xmltv", std::string())};
    }
    json ask(const json& request) {
        const std::optional<std::string> answered = askLoop(
            loop, [this, line = request.dump()] { return service.ask(line); }, [this] { return isEnding.load(); });
        return answered ? json::parse(*answered) : json::object();
    }

    const HttpAddress address;
    EventLoop& loop;
    const Service service;
    StreamReaders readers{kMostReaders};
    std::atomic<bool> isEnding{false};
    MHD_Daemon* daemon = nullptr;
};

std::string checkHttp() {
    return {};
}

HttpServer::HttpServer(const HttpAddress& address, EventLoop& loop, Service service) : address_(address) {
    const int listening = listenAt(address_, error_);
    if (listening < 0) {
        return;
    }
    connections = std::make_unique<Connections>(address_, loop, std::move(service));
    if (!connections->start(listening)) {
        error_ = "cannot serve " + address_.text() + ": the HTTP library does not start";
        close(listening);
    }
}

HttpServer::~HttpServer() = default;

}  // namespace dtvservice
