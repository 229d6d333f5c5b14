// A browser without the library: it sends what no operation of the library sends. Stream event listeners come and go,
// as do section filters and PMT requests that nobody reads.
//   message_browser SEED ONID:TSID:SID...
// It prints "answer serial MICROSECONDS" for each answer to a simple question, and "lost serial" when none came in
// time. SIGINT and SIGTERM end it with exit code 0.
// Threads: the main one sends; another waits for the signals.
#include <signal.h>

#include <boost/make_shared.hpp>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

#include "adapter.h"
#include "app-browserdvbservice-proxy-main.h"
#include "frame/process.h"
#include "locks/lock.h"
#include "velmora/msgqueue/ipc_message_queue.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using lo::browserdvbservice::ServiceInterface;

/// Waits for the answers to the question for the serial number. They come in the order of the questions.
class Answers : public lo::browserdvbservice::Adapter {
public:
    int onVodMaxdomeSecureSerialNumber(frame::MsgIds&, const frame::TransportInfo&, const std::string&) override {
        {
            const locks::Lock lock(mutex);
            ++answered;
        }
        changed.notify_one();
        return 0;
    }
    std::uint64_t count() {
        const locks::Lock lock(mutex);
        return answered;
    }
    /// Whether there is an answer more.
    bool waitAfter(std::uint64_t before) {
        locks::Lock lock(mutex);
        return changed.wait_for(lock.forWaiting(), 2s, [&]() REQUIRES(mutex) { return answered > before; });
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    std::uint64_t answered GUARDED_BY(mutex) = 0;
};

struct Service {
    unsigned short onid = 0;
    unsigned short tsid = 0;
    unsigned short sid = 0;
};

class Sender {
public:
    Sender(Answers& newAnswers, std::vector<Service> newServices, unsigned int seed)
        : answers(newAnswers), services(std::move(newServices)), random(seed) {
        const std::string name = "soak." + std::to_string(getpid());
        queue.reset(velmora::msgqueue::IPCMessageQueue::create(name, 8192, 16));
    }

    void ask() {
        const std::uint64_t before = answers.count();
        const auto begin = Clock::now();
        if (send(&ServiceInterface::cmdVodGetMaxdomeSecureSerialNumber, std::string()) && answers.waitAfter(before)) {
            const auto took = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begin);
            std::printf("answer serial %lld\n", static_cast<long long>(took.count()));
        } else {
            std::printf("lost serial\n");
        }
        std::fflush(stdout);
    }

    void sendSomething() {
        const Service& service = services[random() % services.size()];
        const std::string session = "session " + std::to_string(random() % kSessions);
        switch (random() % 8) {
            case 0:
            case 1:
                sendStreamEvent(&ServiceInterface::cmdAddStreamEventListener, service);
                break;
            case 2:
                sendStreamEvent(&ServiceInterface::cmdRemoveStreamEventListener, service);
                break;
            case 3:
                send(&ServiceInterface::cmdFilterOpen, session, static_cast<unsigned int>(random() % 9000),
                     lo::browserdvbservice::OpenFilterMatchMask_t());
                break;
            case 4:
                send(&ServiceInterface::cmdFilterClose, session);
                break;
            case 5:
                send(&ServiceInterface::cmdStartPMTRequest, session, static_cast<unsigned int>(service.sid));
                break;
            case 6:
                send(&ServiceInterface::cmdStopPMTRequest, session);
                break;
            default:
                send(&ServiceInterface::cmdMountDsmcc, 1U, service.onid, service.tsid, service.sid, short{8});
                break;
        }
    }

private:
    static constexpr unsigned int kSessions = 48;

    template <typename Command, typename... Values>
    bool send(Command command, const Values&... values) {
        frame::MsgIds ids;
        const lo::browserdvbservice::Adapter::Command service(answers);
        return (service.get()->*command)(ids, frame::TransportInfo(), values...) == 0;
    }

    /// By number and by name; events, carousels and objects that exist, and that do not.
    template <typename Command>
    void sendStreamEvent(Command command, const Service& service) {
        static const std::vector<std::string> kEvents = {"5", "6", "goal", "foul", "corner", "700000"};
        static const std::vector<std::string> kObjects = {"", "events/football", "/events/tennis"};
        const auto tag = static_cast<short>(std::vector<int>{7, 8, -1, 99}[random() % 4]);
        send(command, 9U, service.onid, service.tsid, service.sid, tag, kObjects[random() % kObjects.size()],
             kEvents[random() % kEvents.size()]);
    }

    Answers& answers;
    const std::vector<Service> services;
    std::mt19937 random;
    std::unique_ptr<velmora::msgqueue::IPCMessageQueue> queue;
};

void endOnSignals() {
    static sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::thread([] {
        int signal = 0;
        sigwait(&signals, &signal);
        std::_Exit(0);
    }).detach();
}

}  // namespace

int main(int count, char** arguments) {
    std::vector<Service> services;
    for (int index = 2; index < count; ++index) {
        Service service;
        if (std::sscanf(arguments[index], "%hu:%hu:%hu", &service.onid, &service.tsid, &service.sid) == 3) {
            services.push_back(service);
        }
    }
    if (services.empty()) {
        std::fprintf(stderr, "usage: message_browser SEED ONID:TSID:SID...\n");
        return 2;
    }
    endOnSignals();
    if (frame::Process::getInstance().startAppMembersSync(CreateBrowserDvbServiceProxy) != 0) {
        std::fprintf(stderr, "cannot start the proxy; the log says why\n");
        return 1;
    }
    const auto answers = boost::make_shared<Answers>();
    answers->start();
    Sender sender(*answers, services, static_cast<unsigned int>(std::strtoul(arguments[1], nullptr, 10)));
    while (true) {
        for (int step = 0; step < 10; ++step) {
            sender.sendSomething();
            std::this_thread::sleep_for(10ms);
        }
        sender.ask();
    }
}
