// A service that floods its browser with numbered sections, as a process of its own.
//   flooding_service row FILTERS SECTIONS   once so many filters are open: so many sections, one filter after the
//   other,
//                                           none of them lost
//   flooding_service stream                 sections for whatever is open, without end; what does not fit is lost
// A section is table_id 0xC0 and its number within its filter, most significant byte first.
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "browserdvbservice_stub.h"
#include "frame/process.h"
#include "locks/lock.h"
#include "refusing_handler.h"
#include "velmora/msgqueue/ipc_message_queue.h"

namespace {

using velmora::msgqueue::IPCMessageQueue;
using velmora::msgqueue::SectionDataIPCMessage;

const frame::TransportInfo kNoTransport;

class FloodingService : public dtvservice::RefusingHandler {
public:
    void connect(lo::browserdvbservice::ClientInterface& newEvents) { events = &newEvents; }

    void browserConnected(const frame::TransportInfo&) override {}
    void browserDisconnected(const frame::TransportInfo&) override {}

    int cmdUpdateIPCChannelNames(frame::MsgIds&, const frame::TransportInfo& transport,
                                 const std::string& sectionDataChannel, const std::string&,
                                 const std::string&) override {
        const locks::Lock lock(mutex);
        queue.reset(IPCMessageQueue::open(transport.peer, sectionDataChannel));
        return 0;
    }
    int cmdFilterOpen(frame::MsgIds& ids, const frame::TransportInfo&, const std::string& session, unsigned int pid,
                      const lo::browserdvbservice::OpenFilterMatchMask_t&) override {
        {
            const locks::Lock lock(mutex);
            numbers[session] = 0;
        }
        events->onBrowserOpenFilterConf(ids, kNoTransport, pid, session, 0);
        events->onFilterOpened(ids, kNoTransport, session, session);
        return 0;
    }
    int cmdFilterClose(frame::MsgIds& ids, const frame::TransportInfo&, const std::string& session) override {
        {
            const locks::Lock lock(mutex);
            numbers.erase(session);
        }
        // Send these two in the opposite order to the opening, because browsers must not rely on it.
        events->onFilterClosed(ids, kNoTransport, session);
        events->onBrowserOCloseFilterConf(ids, kNoTransport, session, 0);
        return 0;
    }

    std::size_t openFilters() const {
        const locks::Lock lock(mutex);
        return numbers.size();
    }
    /// Sends one section for each open filter and returns how many were sent. With `all`, it waits for space.
    std::size_t sendOneEach(bool all) {
        const locks::Lock lock(mutex);
        std::size_t sent = 0;
        for (auto& filter : numbers) {
            bool gone = send(filter.first, filter.second);
            while (!gone && all) {
                std::this_thread::yield();
                gone = send(filter.first, filter.second);
            }
            filter.second += gone ? 1 : 0;
            sent += gone ? 1 : 0;
        }
        return sent;
    }

private:
    bool send(const std::string& session, std::uint32_t number) REQUIRES(mutex) {
        std::uint8_t section[] = {0xC0,
                                  0x70,
                                  0x04,
                                  static_cast<std::uint8_t>(number >> 24U),
                                  static_cast<std::uint8_t>(number >> 16U),
                                  static_cast<std::uint8_t>(number >> 8U),
                                  static_cast<std::uint8_t>(number)};
        SectionDataIPCMessage message;
        message.sessionName = session;
        message.dataLength = sizeof section;
        message.data = section;
        const bool gone = queue != nullptr && queue->TrySend(message);
        message.data = nullptr;
        return gone;
    }

    lo::browserdvbservice::ClientInterface* events = nullptr;
    mutable std::mutex mutex;
    std::unique_ptr<IPCMessageQueue> queue GUARDED_BY(mutex);
    std::map<std::string, std::uint32_t> numbers GUARDED_BY(mutex);  // number of the next section of each session
};

FloodingService& theService() {
    static auto& service = *new FloodingService;
    return service;
}

frame::AbstractApplication** createServiceStub() {
    auto** const members =
        static_cast<frame::AbstractApplication**>(std::calloc(2, sizeof(frame::AbstractApplication*)));
    auto* const stub = new lo::browserdvbservice::ServiceStub(theService());
    theService().connect(*stub);
    members[0] = stub;
    return members;
}

void sendRow(std::size_t filters, std::size_t sections) {
    while (theService().openFilters() < filters) {
        std::this_thread::yield();
    }
    for (std::size_t sent = 0; sent < sections;) {
        sent += theService().sendOneEach(true);
    }
}

void sendStream() {
    constexpr std::chrono::milliseconds kBetweenRounds{1};
    while (true) {
        theService().sendOneEach(false);
        std::this_thread::sleep_for(kBetweenRounds);
    }
}

}  // namespace

int main(int argc, char** argv) {
    frame::Process process = frame::Process::getInstance();
    if (process.startAppMembersSync(createServiceStub) < 0) {
        return 1;
    }
    std::printf("ready\n");
    std::fflush(stdout);
    if (argc == 4 && std::strcmp(argv[1], "row") == 0) {
        sendRow(std::strtoul(argv[2], nullptr, 10), std::strtoul(argv[3], nullptr, 10));
    } else {
        sendStream();
    }
    while (true) {
        pause();
    }
}
