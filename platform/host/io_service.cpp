// The transport: sending, start and stop, and the platform's entry points.
#include "io_service.h"

#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <system_error>
#include <utility>

#include "descriptors.h"
#include "envelope.h"
#include "held_messages.h"
#include "host_log.h"
#include "platform_common/io_backend.h"
#include "platform_common/record_image.h"

/// The handle that members hold. The transport thread also keeps the service alive while it runs.
struct frameLmqIOService {
    std::shared_ptr<host::IOService> service;
};

namespace host {

namespace {

/// The clients that this process has started. Never destroyed.
class StartedClients {
public:
    static StartedClients& instance() {
        static auto* const clients = new StartedClients;
        return *clients;
    }
    void add(const std::weak_ptr<IOService>& client) {
        const locks::Lock lock(mutex);
        clients.erase(std::remove_if(clients.begin(), clients.end(),
                                     [](const std::weak_ptr<IOService>& each) { return each.expired(); }),
                      clients.end());
        clients.push_back(client);
    }
    std::vector<std::weak_ptr<IOService>> all() {
        const locks::Lock lock(mutex);
        return clients;
    }

private:
    std::mutex mutex;
    std::vector<std::weak_ptr<IOService>> clients GUARDED_BY(mutex);
};

const std::uint8_t* bytesOf(std::string_view text) {
    return reinterpret_cast<const std::uint8_t*>(text.data());
}

}  // namespace

void offerToServices(const NamedQueue& queue) {
    for (const std::weak_ptr<IOService>& each : StartedClients::instance().all()) {
        if (const std::shared_ptr<IOService> client = each.lock()) {
            client->offer(queue);
        }
    }
}

IOService::IOService(frame::AbstractMarshallingImpl& newOwner)
    : owner(newOwner),
      busFile(isService() ? nullptr : BusFile::ofProcess()),
      wakeUp(aboveStandard(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))) {
    if (isService() && !makeSockets() && sockets >= 0) {
        close(sockets);
        sockets = -1;
    }
}

IOService::~IOService() {
    for (const int descriptor : {wakeUp, sockets}) {
        if (descriptor >= 0) {
            close(descriptor);
        }
    }
}

int IOService::registerHandler(const frame::MsgMeta& header, frameLmqMessageHandler handler, void* context,
                               const ovxEndianTable* table) {
    handlers[HandlerKey(header)] = {handler, context, table, platform_common::wireSizeOf(*table)};
    return 0;
}

IOService::Snapshot IOService::connectionsNow() {
    const locks::Lock lock(mutex);
    return connections;
}

void IOService::replaceConnections(Snapshot by) {
    former.push_back(std::exchange(connections, std::move(by)));
    current = connections.get();
    hasFormer = true;
}

/// A send that began with a former list has ended if none runs now.
void IOService::releaseFormer() {
    std::vector<Snapshot> released;  // ends without the lock
    const locks::Lock lock(mutex);
    if (sending == 0) {
        hasFormer = false;
        released.swap(former);
    }
}

int IOService::send(const frame::MsgIds& ids, const frame::MsgMeta& header, const ovxEndianTable& table,
                    const void* record) {
    if (busFile != nullptr) {
        return noteAndSend(ids, header, table, record);
    }
    const CountedSend counted(*this);
    return sendTo(*current, ids, header, table, record);
}

int IOService::noteAndSend(const frame::MsgIds& ids, const frame::MsgMeta& header, const ovxEndianTable& table,
                           const void* record) {
    const std::vector<std::uint8_t> image = platform_common::encodeRecord(table, record);
    busFile->message(bus::Direction::toService, header.messageId,
                     {reinterpret_cast<const char*>(image.data()), image.size()});
    const CountedSend counted(*this);
    const int result = sendTo(*current, ids, header, table, record);
    if (result < 0) {
        busFile->refused(bus::Direction::toService, header.messageId, "not sent", result);
    }
    return result;
}

IOService::CountedSend::~CountedSend() {
    if (--service.sending == 0 && service.hasFormer) {
        service.releaseFormer();
    }
}

int IOService::sendTo(const Connections& targets, const frame::MsgIds& ids, const frame::MsgMeta& header,
                      const ovxEndianTable& table, const void* record) {
    if (targets.empty()) {
        return isService() && ids.peer == frame::kAnyId && !stopping ? 0 : -ENOTCONN;
    }
    constexpr std::size_t kUsual = 5120;  // a message with the longest section
    std::uint8_t usual[kUsual];
    std::unique_ptr<std::uint8_t[]> large;
    std::uint8_t* packet = usual;
    const std::size_t imageSize =
        platform_common::encodeRecord(table, record, usual + kEnvelopeSize, kUsual - kEnvelopeSize);
    const std::size_t length = kEnvelopeSize + imageSize;
    if (length > kUsual) {
        large.reset(new std::uint8_t[length]);
        packet = large.get();
        platform_common::encodeRecord(table, record, packet + kEnvelopeSize, imageSize);
    }
    packEnvelope({header, ids.transaction, static_cast<std::uint32_t>(imageSize)}, packet);
    int result = ids.peer == frame::kAnyId ? 0 : -ENOTCONN;
    const bool isHeld = isService() && HeldMessages::instance().isMine();
    for (const std::shared_ptr<Connection>& target : targets) {
        if (ids.peer != frame::kAnyId && ids.peer != target->peer()) {
            continue;
        }
        int sent = isHeld ? hold(target, packet, length) : target->send(packet, length);
        if (sent > 0) {
            sent = letFlush(target) ? 0 : -ENOTCONN;
        }
        // A send to all browsers succeeds even when one of them disconnects meanwhile.
        const bool toOne = !isService() || ids.peer != frame::kAnyId;
        if (toOne || sent == -EMSGSIZE) {
            result = sent;
        }
    }
    return result;
}

int IOService::hold(const std::shared_ptr<Connection>& target, const std::uint8_t* packet, std::size_t length) {
    HeldMessages::instance().add(shared_from_this(), target);
    return target->hold(packet, length);
}

void IOService::sendHeld(const std::shared_ptr<Connection>& connection) {
    if (connection->sendHeld() > 0) {
        letFlush(connection);
    }
}

/// Packets wait until the connection's socket has room. False if nobody can send them then: the connection is cut off.
bool IOService::letFlush(const std::shared_ptr<Connection>& connection) {
    if (isService()) {
        {
            const locks::Lock lock(mutex);
            waiting.push_back(connection);
            hasNews = true;
        }
        wake();
        return true;
    }
    const bool isWatched = flusher.watch(connection);
    if (!isWatched) {
        connection->cutOff();
    }
    return isWatched;
}

int IOService::start() {
    if (thread.joinable() || !ready()) {
        return -EALREADY;
    }
    stopping = false;
    process = getpid();
    if (!ownInbox.makeRoom()) {
        BLOG_TAGGED(blog::kFailure, "%s\n", "no memory to receive packets");
        return -ENOMEM;
    }
    if (isService()) {
        const int result = endpoint.open(owner.serviceName());
        if (result < 0) {
            return result;
        }
    } else {
        StartedClients::instance().add(weak_from_this());
        tryToConnect();
    }
    try {
        thread = std::thread([self = shared_from_this()] { self->run(); });
    } catch (const std::system_error& error) {
        BLOG_TAGGED(blog::kFailure, "cannot start the transport thread: %s\n", error.what());
        endpoint.close();
        const locks::Lock lock(mutex);
        replaceConnections(std::make_shared<const Connections>());
        untold.clear();
        return -error.code().value();
    }
    return 0;
}

void IOService::offer(const NamedQueue& queue) {
    const Snapshot now = connectionsNow();
    for (const std::shared_ptr<Connection>& connection : *now) {
        if (give(*connection, {queue})) {
            letFlush(connection);
        }
    }
}

/// True if a packet waits for room.
bool IOService::give(Connection& connection, const std::vector<NamedQueue>& queues) {
    bool waits = false;
    for (const NamedQueue& queue : queues) {
        const std::string packet = std::string(kQueueMark) + queue.name;
        const auto sent = {connection.send(bytesOf(kQueueAnnounced), kQueueAnnounced.size()),
                           connection.send(bytesOf(packet), packet.size(), queue.ring)};
        waits = waits || std::max(sent) > 0;
    }
    return waits;
}

void IOService::stop() {
    // In a forked child there is no transport thread, and the sockets are its parent's too.
    if (!thread.joinable() || process != getpid()) {
        return;
    }
    stopping = true;
    wake();
    if (!isService()) {
        // Ends the receive in which the transport thread waits. A connection that it makes from now on ends at once.
        const Snapshot now = connectionsNow();
        for (const std::shared_ptr<Connection>& connection : *now) {
            shutdown(connection->socket(), SHUT_RDWR);
        }
        flusher.stop();
    }
    if (thread.get_id() == std::this_thread::get_id() || turns.isMine()) {
        // Called from a handler: the thread cannot join itself, and all end after the handler has returned.
        thread.detach();
    } else {
        thread.join();
    }
    if (busFile != nullptr) {
        busFile->flush();
    }
}

void IOService::wake() {
    const std::uint64_t one = 1;
    // If the counter is full, the write fails, but the thread wakes all the same.
    [[maybe_unused]] const ssize_t written = write(wakeUp, &one, sizeof one);
}

}  // namespace host

namespace platform_common {

frameLmqIOService* createIOService(frame::AbstractMarshallingImpl& owner) {
    return new frameLmqIOService{std::make_shared<host::IOService>(owner)};
}

int setUpIOService(frameLmqIOService* service) {
    return service == nullptr || service->service->ready() ? 0 : -EMFILE;
}

int startIOService(frameLmqIOService* service) {
    return service == nullptr ? -EINVAL : service->service->start();
}

int stopIOService(frameLmqIOService* service) {
    if (service != nullptr) {
        service->service->stop();
    }
    return 0;
}

void destroyIOService(frameLmqIOService* service) {
    delete service;
}

}  // namespace platform_common

int frameLmqIOServiceSendStructure(frameLmqIOService* service, frame::MsgIds& ids, const frame::MsgMeta& header,
                                   int reserved, const ovxEndianTable* table, const void* record) {
    if (service == nullptr || reserved != 0 || table == nullptr || record == nullptr) {
        return -EINVAL;
    }
    return service->service->send(ids, header, *table, record);
}

int frameLmqIOServiceRegisterMessageHandlerFunction(frameLmqIOService* service, const frame::MsgMeta& header,
                                                    frameLmqMessageHandler handler, void* context,
                                                    const ovxEndianTable* table) {
    if (service == nullptr || handler == nullptr || table == nullptr) {
        return -EINVAL;
    }
    return service->service->registerHandler(header, handler, context, table);
}
