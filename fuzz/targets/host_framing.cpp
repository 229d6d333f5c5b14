// The host platform's sockets: packets of a hostile client, with and without descriptors, to a running service. Each
// record: what comes with the packet, then the packet behind its length.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <thread>

#include "browserdvbservice_stub.h"
#include "envelope.h"
#include "frame/process.h"
#include "oracles.h"
#include "ovx/log.h"
#include "section_ring.h"
#include "velmora/msgqueue/ipc_message_queue.h"

namespace {

using lo::browserdvbservice::ServiceStub;

/// Takes the commands of one client, and waits for its end.
class Service : public lo::browserdvbservice::CommandHandler {
public:
#define COMMAND(identifier, operation, Message, fields)                                                                \
    int operation(frame::MsgIds& ids, const frame::TransportInfo& transport FIELDS_PARAMETER_TYPES(fields)) override { \
        return take(ids, transport);                                                                                   \
    }
#include "browserdvbservice_messages.inc"

    void browserConnected(const frame::TransportInfo& peer) override {
        const std::lock_guard<std::mutex> lock(mutex);
        client = peer.peer;
    }
    void browserDisconnected(const frame::TransportInfo& peer) override {
        {
            const std::lock_guard<std::mutex> lock(mutex);
            fuzz::expect(peer.peer == client, "another client has gone");
            ++gone;
        }
        changed.notify_all();
    }
    void waitForEnd(std::uint64_t ofClients) {
        std::unique_lock<std::mutex> lock(mutex);
        changed.wait(lock, [&] { return gone == ofClients; });
    }

private:
    /// Writes to the queue that the client has given, if any.
    int take(const frame::MsgIds& ids, const frame::TransportInfo& transport) const {
        using velmora::msgqueue::IPCMessageQueue;
        fuzz::expect(ids.peer == transport.peer && ids.peer == client, "a command of another client");
        std::uint8_t byte = 0;
        velmora::msgqueue::SectionDataIPCMessage message;
        message.data = &byte;
        message.dataLength = 1;
        if (const std::unique_ptr<IPCMessageQueue> queue{IPCMessageQueue::open(ids.peer, "")}) {
            queue->TrySend(message);
        }
        message.data = nullptr;
        return 0;
    }

    std::mutex mutex;
    std::condition_variable changed;
    std::uint32_t client = 0;  // guarded by mutex for other threads than the transport's
    std::uint64_t gone = 0;    // guarded by mutex
};

/// A run directory with a running service in this process.
class Host {
public:
    Host() {
        char name[] = "/tmp/dtv-fuzz-XXXXXX";
        directory = mkdtemp(name);
        setenv("DTV_RUN_DIR", directory.c_str(), 1);
        const int result = frame::Process::getInstance().startAppMembersSync([] {
            auto** const members =
                static_cast<frame::AbstractApplication**>(std::calloc(2, sizeof(frame::AbstractApplication*)));
            members[0] = new ServiceStub(service());
            return members;
        });
        fuzz::expect(result == 0, "the service does not start");
        // The log has a descriptor from its first line on.
        BLOG_WRITE(blog::kAlways, "%s", "begins");
    }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
    ~Host() {
        std::error_code ignored;
        frame::Process::getInstance().stopAppMembers();
        std::filesystem::remove_all(directory, ignored);
    }

    /// A new client's socket.
    int connected() const {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = directory + "/" + lo::browserdvbservice::kServiceName + ".sock";
        std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
        const int client = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
        fuzz::expect(connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0,
                     "no connection");
        return client;
    }
    static Service& service() {
        static Service one;
        return one;
    }

private:
    std::string directory;
};

/// The number of open descriptors of this process.
std::ptrdiff_t openDescriptors() {
    const std::filesystem::directory_iterator entries("/proc/self/fd");
    return std::distance(begin(entries), end(entries));
}

/// Whether there are so many open descriptors as before. The service closes the client's socket after it has told of
/// the client's end.
bool hasOpen(std::ptrdiff_t before) {
    if (sizeof(void*) < 8) {
        return true;  // the emulator keeps the descriptors that the service has no room for
    }
    for (int looks = 0; looks < 10000; ++looks) {
        if (openDescriptors() == before) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    return false;
}

/// What a client may attach to a packet.
std::vector<int> descriptorsOf(unsigned int kind, const host::SectionRing& ring) {
    enum Attached : unsigned int { kNothing, kRing, kFile, kMemory, kTwo, kKinds };
    switch (kind % kKinds) {
        case kRing:
            return {dup(ring.descriptor())};
        case kFile:
            return {open("/dev/null", O_RDWR | O_CLOEXEC)};
        case kMemory:
            return {memfd_create("memory", MFD_CLOEXEC)};
        case kTwo:
            return {dup(ring.descriptor()), dup(ring.descriptor())};
        default:
            return {};
    }
}

void send(int client, std::vector<std::uint8_t> packet, const std::vector<int>& descriptors) {
    constexpr std::size_t kMost = 2;
    alignas(cmsghdr) std::uint8_t control[CMSG_SPACE(kMost * sizeof(int))]{};
    iovec piece{packet.data(), packet.size()};
    msghdr message{};
    message.msg_iov = &piece;
    message.msg_iovlen = 1;
    if (!descriptors.empty()) {
        message.msg_control = control;
        message.msg_controllen = CMSG_SPACE(descriptors.size() * sizeof(int));
        cmsghdr* const attached = CMSG_FIRSTHDR(&message);
        attached->cmsg_level = SOL_SOCKET;
        attached->cmsg_type = SCM_RIGHTS;
        attached->cmsg_len = CMSG_LEN(descriptors.size() * sizeof(int));
        std::memcpy(CMSG_DATA(attached), descriptors.data(), descriptors.size() * sizeof(int));
    }
    sendmsg(client, &message, MSG_NOSIGNAL);
    for (const int descriptor : descriptors) {
        close(descriptor);
    }
}

/// Puts the envelope's length right, so that an input need not guess it.
void putRight(std::vector<std::uint8_t>& packet) {
    constexpr std::size_t kLengthAt = 24;
    if (packet.size() >= host::kEnvelopeSize) {
        const std::size_t image = packet.size() - host::kEnvelopeSize;
        for (std::size_t index = 0; index < 4; ++index) {
            packet[kLengthAt + index] = static_cast<std::uint8_t>(image >> (24U - 8U * index));
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Host host;
    static std::uint64_t clients = 0;
    const std::ptrdiff_t before = openDescriptors();
    const int result = fuzz::run(data, size, {4U << 20U, 1000}, [](fuzz::Input input) {
        constexpr std::uint8_t kUnchanged = 0x80;
        std::string error;
        const std::shared_ptr<host::SectionRing> ring = host::SectionRing::create(64, 2, error);
        const int client = host.connected();
        while (!input.isEmpty()) {
            const std::uint8_t kind = input.u8();
            std::vector<std::uint8_t> packet = input.chunk();
            if ((kind & kUnchanged) == 0) {
                putRight(packet);
            }
            send(client, packet, descriptorsOf(kind & 0x7FU, *ring));
        }
        close(client);
        Host::service().waitForEnd(++clients);
    });
    // Behind the run: each look asks for memory, which is not the input's.
    fuzz::expect(hasOpen(before), "descriptors of a client are left open");
    return result;
}
