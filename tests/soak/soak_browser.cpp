// A browser that runs for a long time: it uses what the library offers at random, and measures how long a simple
// request takes.
//   soak_browser live SEED SERVICE...   tunes, filters, listeners and requests at random; SERVICE is ONID:TSID:SID
//   soak_browser ask                    only asks the service, again and again
// It prints "answer KIND MICROSECONDS" for each answer, and "lost KIND" when none came in time. SIGINT and SIGTERM end
// it with exit code 0.
// Threads: one for each kind of use. They run until the process ends, wherever they are.
#include <browser_AIT_catcher.h>
#include <dvb_ait_section_interface.h>
#include <dvb_api_interface.h>
#include <dvb_helpers/empty_listener.h>
#include <dvb_helpers/section_filter.h>
#include <signal.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <optional>
#include <random>
#include <thread>

#include "locks/lock.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using velmora::dtv::DvbAPIInterface;
using velmora::dtv::DVBSectionInterface;
using velmora::dtv::helpers::EmptyListener;
using velmora::dtv::helpers::SectionDelivery;
using velmora::dtv::helpers::SectionFilter;
using velmora::dtv::helpers::SectionPattern;
using velmora::dvbservice::BrowserAITCatcher;

constexpr int kIdDvbC = 11;  // OIPF DAE, clause 7.13.11

template <typename Interface>
Interface& interfaceOf(const char* name) {
    velmora::dtv::IDTVUnknown* found = nullptr;
    if (DTVAPI_QueryInterface(name, &found) != 0) {
        std::fprintf(stderr, "the library has no %s\n", name);
        std::exit(1);
    }
    return *static_cast<Interface*>(found);
}

/// Asks for a connection to the CA system, which the service answers at once with the number of the question.
class Questions final : public EmptyListener {
public:
    explicit Questions(DvbAPIInterface& newApi) : api(newApi) {}

    /// How long the answer took, or nothing when none came.
    std::optional<std::chrono::microseconds> ask() {
        locks::Lock lock(mutex);
        const std::uint64_t question = ++asked;
        const auto begin = Clock::now();
        lock.unlock();
        if (api.connectCa(question) != 0) {
            return std::nullopt;
        }
        lock.lock();
        if (!changed.wait_for(lock.forWaiting(), 2s, [&]() REQUIRES(mutex) { return answered == question; })) {
            return std::nullopt;
        }
        return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begin);
    }

private:
    void onCaDrmConnected(std::uint64_t question, std::uint16_t, std::uint16_t) override {
        {
            const locks::Lock lock(mutex);
            answered = question;
        }
        changed.notify_one();
    }

    DvbAPIInterface& api;
    std::mutex mutex;
    std::condition_variable changed;
    std::uint64_t asked GUARDED_BY(mutex) = 0;
    std::uint64_t answered GUARDED_BY(mutex) = 0;
};

void tell(const char* kind, std::optional<std::chrono::microseconds> duration) {
    if (duration) {
        std::printf("answer %s %lld\n", kind, static_cast<long long>(duration->count()));
    } else {
        std::printf("lost %s\n", kind);
    }
    std::fflush(stdout);
}

/// How long a call took, or nothing if it failed.
std::optional<std::chrono::microseconds> timed(const std::function<bool()>& call) {
    const auto begin = Clock::now();
    const bool good = call();
    const auto duration = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begin);
    return good ? std::optional(duration) : std::nullopt;
}

/// Random numbers of one thread.
class Dice {
public:
    explicit Dice(unsigned int seed) : random(seed) {}
    /// 0 to `sides` - 1.
    std::size_t roll(std::size_t sides) { return random() % sides; }
    template <typename Value>
    Value oneOf(std::initializer_list<Value> values) {
        return *(values.begin() + roll(values.size()));
    }

private:
    std::mt19937 random;
};

struct Service {
    int onid = 0;
    int tsid = 0;
    int sid = 0;
};

/// Keeps 32 filters and PMT requests, and replaces one after the other.
[[noreturn]] void useFilters(DVBSectionInterface& filters, const std::vector<Service>& services, Dice dice) {
    constexpr std::size_t kFilters = 32;
    static std::atomic<std::uint64_t> received{0};
    const auto count = [](const unsigned char*, unsigned int) { ++received; };
    std::vector<SectionFilter> open(kFilters);
    while (true) {
        SectionFilter& replaced = open[dice.roll(kFilters)];
        const auto delivery = dice.oneOf({SectionDelivery::every, SectionDelivery::changed, SectionDelivery::once});
        replaced.close();
        if (dice.roll(4) == 0) {
            const auto serviceId = static_cast<unsigned int>(services[dice.roll(services.size())].sid);
            replaced = SectionFilter::onPmtOf(filters, serviceId, count, delivery);
        } else {
            const SectionPattern pattern = dice.roll(2) == 0
                                               ? SectionPattern::any()
                                               : SectionPattern::table(dice.oneOf<unsigned char>({0, 2, 0x4E}));
            // The last two: a PID without packets, and one that is none.
            const auto pid = dice.oneOf<unsigned int>({0, 16, 17, 18, 20, 256, 257, 258, 512, 768, 8000, 9000});
            replaced = SectionFilter(filters, pid, pattern, count, delivery);
        }
        std::this_thread::sleep_for(10ms);
    }
}

/// Presents another service every half second, now and then one that does not exist.
[[noreturn]] void useTuner(DvbAPIInterface& api, const std::vector<Service>& services, Dice dice) {
    while (true) {
        const Service& service = services[dice.roll(services.size())];
        const std::size_t way = dice.roll(10);
        if (way == 0) {
            api.tuneToService(kIdDvbC, service.onid, service.tsid, 1, 0);
        } else if (way == 1) {
            api.tuneToService(std::string("\x44\x0B\x03\x46\x00\x00\xFF\xF2\x05\x00\x69\x00\x0F", 13), service.sid, 0);
        } else {
            api.tuneToService(kIdDvbC, service.onid, service.tsid, service.sid, 0);
        }
        for (int step = 0; step < 5; ++step) {
            const int type = static_cast<int>(dice.roll(3));
            dice.oneOf<std::function<void()>>({[&] { api.selectComponent(type); }, [&] { api.unselectComponent(type); },
                                               [&] { api.tuneToComponent(type, 257, 0); },
                                               [&] { api.getCurrentCCID(); }, [&] { api.getCurrentDsd(); }})();
            std::this_thread::sleep_for(100ms);
        }
    }
}

/// Feeds the AIT catcher as a browser does.
class AitFeeder final : public EmptyListener {
public:
    void OnChannelChanged(bool, std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid) override {
        BrowserAITCatcher::getInstance()->updateCurrentChannelInfo(0, onid, tsid, sid);
    }
    void onAITSectionUpdated(std::uint16_t, std::uint16_t, std::uint16_t, const std::string& section) override {
        BrowserAITCatcher::getInstance()->updateAIT(section);
    }
};

class AitCounter final : public velmora::dtv::AITSectionClient {
public:
    void onCurrentChannelAIT(std::uint16_t, std::uint16_t, std::uint16_t, const std::vector<std::uint8_t>&) override {
        ++received;
    }

private:
    std::atomic<std::uint64_t> received{0};
};

/// Listeners, the AIT client and its replays come and go.
[[noreturn]] void useListeners(DvbAPIInterface& api, const std::vector<Service>& services, Dice dice) {
    constexpr std::size_t kListeners = 8;
    auto& ait = interfaceOf<velmora::dtv::DVBAITSectionInterface>("DvbAITAPI");
    static auto& client = *new AitCounter;  // the catcher may call it until the process ends
    std::vector<std::shared_ptr<EmptyListener>> listeners(kListeners);
    while (true) {
        std::shared_ptr<EmptyListener>& replaced = listeners[dice.roll(kListeners)];
        api.removeListener(replaced);
        replaced = std::make_shared<AitFeeder>();
        api.addListener(replaced);
        const Service& service = services[dice.roll(services.size())];
        if (dice.roll(8) == 0) {
            ait.unRegisterClient(&client);
        }
        ait.getCurrentChannelAIT(&client, static_cast<std::uint16_t>(service.onid),
                                 static_cast<std::uint16_t>(service.tsid), static_cast<std::uint16_t>(service.sid));
        std::this_thread::sleep_for(20ms);
    }
}

/// Every request that events answer, or nothing.
[[noreturn]] void useRequests(DvbAPIInterface& api, Dice dice) {
    while (true) {
        const auto number = static_cast<std::uint32_t>(dice.roll(80));
        const auto slot = static_cast<std::uint16_t>(dice.roll(2));
        dice.oneOf<std::function<void()>>(
            {[&] { api.sendPtsRequest(0); }, [&] { api.startTemiTimelineRequest(1, number % 4, 0); },
             [&] { api.startTemiTimelineRequest(1, 300, 0); }, [&] { api.stopTemiTimelineRequest(); },
             [&] { api.startOSDDetection(number); }, [&] { api.stopOSDDetection(number); },
             [&] { api.sendDrmMessage(number, 1, 0, "text/plain", "a message"); }, [&] { api.disconnectCa(slot); },
             [&] { api.vbStartDtvInfoRequest(); }, [&] { api.notifyMwhbStart(); }, [&] { api.triggerAitRestart(); },
             [&] { api.sendApplicationStartedFailed(); }, [&] { api.sendApplicationStartedSucceeded(); },
             [&] { api.sendOpAppInstallStatus(1, 1); }})();
        std::this_thread::sleep_for(20ms);
    }
}

void startUse(DvbAPIInterface& api, const std::vector<Service>& services, unsigned int seed) {
    auto& filters = interfaceOf<DVBSectionInterface>("SectionFilterAPI");
    std::thread([&filters, services, seed] { useFilters(filters, services, Dice(seed)); }).detach();
    std::thread([&api, services, seed] { useTuner(api, services, Dice(seed + 1)); }).detach();
    std::thread([&api, services, seed] { useListeners(api, services, Dice(seed + 2)); }).detach();
    std::thread([&api, seed] { useRequests(api, Dice(seed + 3)); }).detach();
}

/// The usual requests, one after the other: one that an event answers, and those that wait for their answer.
[[noreturn]] void askOnly(DvbAPIInterface& api, Questions& questions) {
    auto& filters = interfaceOf<DVBSectionInterface>("SectionFilterAPI");
    while (true) {
        tell("ca", questions.ask());
        tell("audio", timed([&] { return api.setAudioSource("tuner") == 0; }));
        std::optional<SectionFilter> filter;
        tell("filter", timed([&] {
                 filter.emplace(filters, 16, SectionPattern::any(), [](const unsigned char*, unsigned int) {});
                 return filter->isOpen();
             }));
        std::this_thread::sleep_for(2ms);
    }
}

bool parse(const char* text, Service& service) {
    return std::sscanf(text, "%d:%d:%d", &service.onid, &service.tsid, &service.sid) == 3;
}

/// Signals end the process from a thread of its own, so that exit() runs beside the others.
void endOnSignals() {
    static sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::thread([] {
        int signal = 0;
        sigwait(&signals, &signal);
        std::exit(0);
    }).detach();
}

}  // namespace

int main(int count, char** arguments) {
    const std::string mode = count > 1 ? arguments[1] : "";
    std::vector<Service> services;
    for (int index = 3; index < count; ++index) {
        services.emplace_back();
        if (!parse(arguments[index], services.back())) {
            services.clear();
            break;
        }
    }
    if (mode != "ask" && (mode != "live" || services.empty())) {
        std::fprintf(stderr, "usage: soak_browser ask, or: soak_browser live SEED ONID:TSID:SID...\n");
        return 2;
    }
    endOnSignals();
    auto& api = interfaceOf<DvbAPIInterface>("DvbAPIInterface");
    static const auto questions = std::make_shared<Questions>(api);
    api.addListener(questions);
    if (mode == "ask") {
        askOnly(api, *questions);
    }
    startUse(api, services, static_cast<unsigned int>(std::strtoul(arguments[2], nullptr, 10)));
    while (true) {
        tell("ca", questions->ask());
        std::this_thread::sleep_for(100ms);
    }
}
