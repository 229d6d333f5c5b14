// A DTV service that only answers, on the thread that receives: what the measurements of the library talk to.
//   answering_service CPU BYTES   runs on that CPU until it is ended by a signal
// It answers a question for a PTS, without a text if BYTES is 0, else by a DRM result with a text of that size. It
// opens every section filter. A question for another number than 0 makes it write that many sections of BYTES, one for
// each open filter in turn, from a thread of its own.
// Threads: the transport's threads answer, one at a time; each order of sections has a thread.
// Locks:   none: the list of filters is copied for an order, and only the transport's threads change it.
#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "browserdvbservice_stub.h"
#include "cpus.h"
#include "frame/process.h"
#include "velmora/msgqueue/ipc_message_queue.h"

namespace {

using frame::MsgIds;
using frame::TransportInfo;
using lo::browserdvbservice::ServiceStub;
using velmora::msgqueue::IPCMessageQueue;

/// Writes as fast as the reader takes.
void writeSections(std::uint32_t peer, const std::vector<std::string>& sessions, std::size_t bytes,
                   std::uint32_t count) {
    const std::unique_ptr<IPCMessageQueue> queue(IPCMessageQueue::open(peer, ""));
    if (queue == nullptr || sessions.empty()) {
        return;
    }
    std::vector<std::uint8_t> section(bytes, 0xAA);
    velmora::msgqueue::SectionDataIPCMessage message;
    message.data = section.data();
    message.dataLength = static_cast<std::uint32_t>(bytes);
    std::size_t next = 0;
    for (std::uint32_t sent = 0; sent < count; ++sent) {
        message.sessionName = sessions[next];
        next = next + 1 == sessions.size() ? 0 : next + 1;
        while (!queue->TrySend(message)) {
            sched_yield();
        }
    }
    message.data = nullptr;
}

/// Does nothing with any command.
class Ignoring : public lo::browserdvbservice::CommandHandler {
public:
#define COMMAND(identifier, operation, Message, fields)                                    \
    int operation(MsgIds&, const TransportInfo& FIELDS_PARAMETER_TYPES(fields)) override { \
        return 0;                                                                          \
    }
#include "browserdvbservice_messages.inc"
    void browserConnected(const TransportInfo&) override {}
    void browserDisconnected(const TransportInfo&) override {}
};

class Answers final : public Ignoring {
public:
    explicit Answers(std::size_t newBytes) : bytes(newBytes), text(newBytes, 'x') {}

    int cmdSendPtsRequest(MsgIds& ids, const TransportInfo& transport, std::uint32_t sections) override {
        if (sections != 0) {
            std::thread(writeSections, ids.peer, sessions, bytes, sections).detach();
            return 0;
        }
        return text.empty() ? stub->onPtsNotify(ids, transport, 1, 2)
                            : stub->onDrmResultReply(ids, transport, 1, 2, text, 3);
    }
    int cmdFilterOpen(MsgIds& ids, const TransportInfo& transport, const std::string& session, std::uint32_t pid,
                      const lo::browserdvbservice::OpenFilterMatchMask_t&) override {
        sessions.push_back(session);
        return stub->onBrowserOpenFilterConf(ids, transport, pid, session, 0);
    }
    int cmdFilterClose(MsgIds& ids, const TransportInfo& transport, const std::string& session) override {
        sessions.erase(std::remove(sessions.begin(), sessions.end(), session), sessions.end());
        return stub->onBrowserOCloseFilterConf(ids, transport, session, 0);
    }

    ServiceStub* stub = nullptr;

private:
    const std::size_t bytes;
    const std::string text;
    std::vector<std::string> sessions;
};

Answers* answers = nullptr;

}  // namespace

int main(int, char** arguments) {
    bench::pinTo(std::atoi(arguments[1]));
    answers = new Answers(std::strtoul(arguments[2], nullptr, 10));
    const int started = frame::Process::getInstance().startAppMembersSync([] {
        auto** const members =
            static_cast<frame::AbstractApplication**>(std::calloc(2, sizeof(frame::AbstractApplication*)));
        answers->stub = new ServiceStub(*answers);
        members[0] = answers->stub;
        return members;
    });
    if (started != 0) {
        return 1;
    }
    while (true) {
        pause();
    }
}
