// IOService: the message transport of one marshalling member: its connections, its handlers and its transport thread.
// Threads: send() from any; handlers and connection callbacks on the transport thread, one at a time.
// Blocks:  stop() until no handler runs, except when called from a handler. Everything else: never.
// Locks:   mutex guards connections; it is not held during a handler, a callback or a message's send. A new connection
//          gets the process's queues under it.
// Fails:   sends with negative error numbers; start() likewise, when the transport itself cannot run.
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <tuple>
#include <vector>

#include "connection.h"
#include "endpoint.h"
#include "frame/process_member.h"
#include "locks/lock.h"
#include "queue_exchange.h"

namespace host {

class IOService : public std::enable_shared_from_this<IOService> {
public:
    explicit IOService(frame::AbstractMarshallingImpl& newOwner);
    IOService(const IOService&) = delete;
    IOService& operator=(const IOService&) = delete;
    ~IOService();

    int registerHandler(const frame::MsgMeta& header, frameLmqMessageHandler handler, void* context,
                        const ovxEndianTable* table);
    int send(const frame::MsgIds& ids, const frame::MsgMeta& header, const ovxEndianTable& table, const void* record);
    /// False when the constructor could not get its resources.
    bool ready() const { return wakeUp >= 0; }
    int start();
    void stop();
    /// A client: gives the queue to the services that it is connected to.
    void offer(const NamedQueue& queue) EXCLUDES(mutex);

private:
    struct Handler {
        frameLmqMessageHandler function;
        void* context;
        const ovxEndianTable* table;
    };
    using HandlerKey = std::tuple<std::uint32_t, std::uint32_t, std::uint8_t>;
    using Connections = std::vector<std::shared_ptr<Connection>>;

    bool isService() const { return owner.couplingMode() == frame::CouplingModeService; }
    Connections connectionsNow() EXCLUDES(mutex);
    void run();
    void pollOnce();
    void wake();
    void drainWakeUps();
    void tryToConnect();
    void tryToAccept();
    void adopt(int connectedSocket) EXCLUDES(mutex);
    void tellOfNewConnections() EXCLUDES(mutex);
    void closeConnection(const std::shared_ptr<Connection>& connection) EXCLUDES(mutex);
    void give(Connection& connection, const std::vector<NamedQueue>& queues);
    bool isPaused(const Connection& connection, ReadingPace::Clock::time_point now) const;
    int patience(const Connections& polled, bool retries, ReadingPace::Clock::time_point now) const;
    bool receive(Connection& connection, int mostPackets, bool hasGone);
    void take(Connection& connection, const std::uint8_t* packet, std::size_t length, int attached);
    void takeQueue(Connection& connection, const std::string& name, int attached);
    void drop(Connection& connection, const std::string& reason);

    frame::AbstractMarshallingImpl& owner;
    std::map<HandlerKey, Handler> handlers;  // written only before start
    ServiceEndpoint endpoint;                // used by start(), then only by the transport thread
    int wakeUp;                              // an eventfd

    std::mutex mutex;
    Connections connections GUARDED_BY(mutex);
    Connections untold GUARDED_BY(mutex);  // connected, but the member does not know yet

    std::vector<std::uint8_t> receiveBuffer;  // start(), then the transport thread
    bool failureTold = false;                 // transport thread
    std::string problem;                      // of connecting or accepting, told; start(), then the transport thread
    bool isAcceptPaused = false;              // transport thread
    std::atomic<bool> stopping{false};
    std::thread thread;  // used by the thread that starts and stops
};

/// Gives the queue to the services that this process is connected to. Later services get it when they are connected.
/// Any thread.
void offerToServices(const NamedQueue& queue);

}  // namespace host
