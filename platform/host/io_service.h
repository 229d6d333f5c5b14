// IOService: the message transport of one marshalling member: its connections, its handlers and its transport thread.
// Threads: send() from any; handlers and connection callbacks one at a time: a client's on its transport thread, a
//          service's on that one or on a follower.
// Blocks:  stop() until no handler runs, except when called from a handler. Everything else: never.
// Locks:   mutex guards connections; it is not held during a handler, a callback or a message's send. A new connection
//          gets the process's queues under it.
// A client's transport thread waits in the receive of its one connection, so that a message costs one system call. So
// does a follower, the thread that a service has for each of its first clients. The service's transport thread waits
// for the other sockets.
// Fails:   sends with negative error numbers; start() likewise, when the transport itself cannot run.
#pragma once

#include <sys/types.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <vector>

#include "bus_file.h"
#include "connection.h"
#include "endpoint.h"
#include "flusher.h"
#include "frame/process_member.h"
#include "locks/lock.h"
#include "platform_common/record_image.h"
#include "queue_exchange.h"
#include "turns.h"

namespace host {

class IOService : public std::enable_shared_from_this<IOService> {
public:
    /// Clients of a service that have a follower each. The others share the transport thread.
    static constexpr unsigned int kMostFollowers = 16;

    explicit IOService(frame::AbstractMarshallingImpl& newOwner);
    IOService(const IOService&) = delete;
    IOService& operator=(const IOService&) = delete;
    ~IOService();

    int registerHandler(const frame::MsgMeta& header, frameLmqMessageHandler handler, void* context,
                        const ovxEndianTable* table);
    int send(const frame::MsgIds& ids, const frame::MsgMeta& header, const ovxEndianTable& table, const void* record);
    /// False when the constructor could not get its resources.
    bool ready() const { return wakeUp >= 0 && (!isService() || sockets >= 0); }
    int start();
    void stop();
    /// A service: sends what the connection holds.
    void sendHeld(const std::shared_ptr<Connection>& connection);
    /// A client: gives the queue to the services that it is connected to.
    void offer(const NamedQueue& queue) EXCLUDES(mutex);

private:
    struct Handler {
        frameLmqMessageHandler function;
        void* context;
        const ovxEndianTable* table;
        std::size_t wireSize;
    };
    struct HandlerKey {
        std::uint32_t interfaceId;
        std::uint32_t messageId;
        std::uint8_t direction;

        explicit HandlerKey(const frame::MsgMeta& header)
            : interfaceId(header.interfaceId), messageId(header.messageId), direction(header.direction) {}
        bool operator==(const HandlerKey& other) const {
            return messageId == other.messageId && interfaceId == other.interfaceId && direction == other.direction;
        }
    };
    struct HashOfKey {
        std::size_t operator()(const HandlerKey& key) const { return key.messageId * 2U + key.direction; }
    };
    /// What a thread that receives needs for itself.
    struct Inbox {
        std::unique_ptr<std::uint8_t[]> packet;
        platform_common::DecodedRecord record;

        /// False without memory.
        bool makeRoom();
    };
    /// Keeps the connections that a send uses.
    struct CountedSend {
        explicit CountedSend(IOService& newService) : service(newService) { ++service.sending; }
        CountedSend(const CountedSend&) = delete;
        CountedSend& operator=(const CountedSend&) = delete;
        ~CountedSend();
        IOService& service;
    };
    enum class Received { packet, nothing, end };
    struct Follower {
        std::shared_ptr<Connection> connection;
        std::thread thread;
    };
    using Connections = std::vector<std::shared_ptr<Connection>>;
    using Snapshot = std::shared_ptr<const Connections>;  // replaced, never changed
    using Now = ReadingPace::Clock::time_point;

    bool isService() const { return owner.couplingMode() == frame::CouplingModeService; }
    Snapshot connectionsNow() EXCLUDES(mutex);
    void replaceConnections(Snapshot by) REQUIRES(mutex);
    void releaseFormer() EXCLUDES(mutex);
    int sendTo(const Connections& targets, const frame::MsgIds& ids, const frame::MsgMeta& header,
               const ovxEndianTable& table, const void* record);
    int hold(const std::shared_ptr<Connection>& target, const std::uint8_t* packet, std::size_t length);
    int noteAndSend(const frame::MsgIds& ids, const frame::MsgMeta& header, const ovxEndianTable& table,
                    const void* record);
    bool letFlush(const std::shared_ptr<Connection>& connection) EXCLUDES(mutex);
    void wake();
    void drainWakeUps();
    void run();
    void adopt(int connectedSocket) EXCLUDES(mutex);
    void tellOfNewConnections() EXCLUDES(mutex);
    void tellOfConnection(const Connection& connection);
    void disconnect(Connection& connection) EXCLUDES(mutex);
    void closeConnection(Connection& connection) EXCLUDES(mutex);
    static bool give(Connection& connection, const std::vector<NamedQueue>& queues);
    Received receive(Connection& connection, Inbox& inbox, int flags);
    void takeOther(Connection& connection, Inbox& inbox, std::size_t length, int attached);
    void takeSeveral(Connection& connection, Inbox& inbox, std::size_t length);
    void takeMessage(Connection& connection, Inbox& inbox, std::uint8_t* packet, std::size_t length);
    void takeQueue(Connection& connection, const std::string& name, int attached);
    void drop(Connection& connection, const std::string& reason, std::uint32_t message = 0);
    Turns* turnsOfHandlers() { return isService() ? &turns : nullptr; }

    // A client's transport thread.
    void followService();
    void pauseBeforeRetry();
    void tryToConnect();
    void noteAbsence(bool isAbsent);

    // A service's transport thread.
    void serve();
    void serveOnce();
    void tryToAccept();
    bool makeSockets();
    void forget(int descriptor) const;
    void watch(Connection& connection, std::uint32_t events) const;
    void unwatch(Connection& connection) const;
    void awaitRoom() EXCLUDES(mutex);
    static bool isTooFast(const Connection& connection, Now now);
    void pause(Connection& connection);
    int resumePaused();
    bool serveClient(Connection& connection, std::uint32_t ready, int mostPackets);
    bool receiveSome(Connection& connection, int mostPackets, bool hasGone);
    void flushFollowed(Connection& connection) const;

    // A service's followers.
    bool startFollower(const std::shared_ptr<Connection>& connection);
    void joinEndedFollowers() EXCLUDES(mutex);
    void endFollowers();
    void follow(Connection& connection, Inbox& inbox) EXCLUDES(mutex);
    void keepPace(Connection& connection) const;

    frame::AbstractMarshallingImpl& owner;
    BusFile* const busFile;                                       // of a client, if there is one
    std::unordered_map<HandlerKey, Handler, HashOfKey> handlers;  // written only before start
    ServiceEndpoint endpoint;                                     // used by start(), then only by the transport thread
    Flusher flusher;                                              // of a client
    int wakeUp;                                                   // an eventfd

    std::mutex mutex;
    Snapshot connections GUARDED_BY(mutex) = std::make_shared<const Connections>();
    std::vector<Snapshot> former GUARDED_BY(mutex);  // a send may still use them
    Connections untold GUARDED_BY(mutex);            // connected, but the member does not know yet
    Connections waiting GUARDED_BY(mutex);           // of a service: have packets for which there was no room
    std::vector<const Connection*> unfollowed GUARDED_BY(mutex);  // their followers end
    std::atomic<bool> hasNews{false};                             // one of the three lists has an entry

    // What a send reads without the lock. A former list is kept until no send runs.
    std::atomic<const Connections*> current{connections.get()};
    std::atomic<std::uint32_t> sending{0};
    std::atomic<bool> hasFormer{false};

    Turns turns;                      // of a service's handlers and callbacks
    Inbox ownInbox;                   // start(), then the transport thread
    int sockets = -1;                 // a service's epoll; constructor, then the transport thread
    Connections paused;               // send too much and are not watched; transport thread
    std::vector<Follower> followers;  // transport thread
    bool isAcceptPaused = false;      // transport thread
    bool failureTold = false;         // transport thread
    bool isAbsenceNoted = false;      // in busFile; start(), then the transport thread
    std::string problem;              // of connecting or accepting, told; start(), then the transport thread
    std::atomic<bool> stopping{false};
    pid_t process = 0;   // that has started the thread
    std::thread thread;  // used by the thread that starts and stops
};

/// Gives the queue to the services that this process is connected to. Later services get it when they are connected.
/// Any thread.
void offerToServices(const NamedQueue& queue);

}  // namespace host
