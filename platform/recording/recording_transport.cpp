// The recording transport: records sends, and injects events on one thread.
#include <algorithm>
#include <deque>
#include <future>
#include <thread>

#include "platform_common/io_backend.h"
#include "recorder.h"

/// A handle; the recorder holds all state.
struct frameLmqIOService {
    bool started = false;
};

namespace recording {

Recorder& Recorder::instance() {
    static auto* const recorder = new Recorder;
    return *recorder;
}

namespace {

/// Runs functions one after the other on a thread that lives as long as the process.
class InjectionThread {
public:
    static InjectionThread& instance() {
        static auto* const thread = new InjectionThread;
        return *thread;
    }

    void run(const std::function<void()>& function) {
        if (std::this_thread::get_id() == id) {
            function();
            return;
        }
        std::packaged_task<void()> task(function);
        std::future<void> done = task.get_future();
        {
            const locks::Lock lock(mutex);
            tasks.push_back(std::move(task));
        }
        filled.notify_one();
        done.get();
    }

private:
    InjectionThread() {
        std::thread thread([this] { loop(); });
        id = thread.get_id();
        thread.detach();
    }

    [[noreturn]] void loop() {
        while (true) {
            std::packaged_task<void()> task;
            {
                locks::Lock lock(mutex);
                filled.wait(lock.forWaiting(), [this]() REQUIRES(mutex) { return !tasks.empty(); });
                task = std::move(tasks.front());
                tasks.pop_front();
            }
            task();
        }
    }

    std::mutex mutex;
    std::condition_variable filled;
    std::deque<std::packaged_task<void()>> tasks GUARDED_BY(mutex);
    std::thread::id id;
};

bool sameHeader(const frame::MsgMeta& left, const frame::MsgMeta& right) {
    return left.interfaceId == right.interfaceId && left.messageId == right.messageId &&
           left.direction == right.direction;
}

Registration findRegistration(const frame::MsgMeta& header) {
    Recorder& recorder = Recorder::instance();
    const locks::Lock lock(recorder.mutex);
    for (auto known = recorder.registrations.rbegin(); known != recorder.registrations.rend(); ++known) {
        if (sameHeader(known->header, header)) {
            return *known;
        }
    }
    return {};
}

}  // namespace

void reset() {
    Recorder& recorder = Recorder::instance();
    const locks::Lock lock(recorder.mutex);
    recorder.sent.clear();
    recorder.sendAction = nullptr;
    recorder.sendResult = 0;
    recorder.log.clear();
    recorder.logAction = nullptr;
    recorder.dumps.clear();
    recorder.setUpResult = 0;
    recorder.startResult = 0;
    recorder.stopResult = 0;
    recorder.threadCreateResult = 0;
    recorder.threadsCreated.clear();
    recorder.queueCreationFails = false;
    recorder.logThreshold = 0xFFFF;
    recorder.levelChecks = 0;
    recorder.formattedLines = 0;
}

std::vector<SentMessage> sent() {
    Recorder& recorder = Recorder::instance();
    const locks::Lock lock(recorder.mutex);
    return recorder.sent;
}

bool waitForSent(std::size_t count) {
    Recorder& recorder = Recorder::instance();
    return recorder.waitFor([&]() REQUIRES(recorder.mutex) { return recorder.sent.size() >= count; });
}

void setSendResult(int result) {
    Recorder& recorder = Recorder::instance();
    const locks::Lock lock(recorder.mutex);
    recorder.sendResult = result;
}

void setSendAction(std::function<int(const SentMessage&)> action) {
    Recorder& recorder = Recorder::instance();
    const locks::Lock lock(recorder.mutex);
    recorder.sendAction = std::move(action);
}

std::vector<Registration> registrations() {
    Recorder& recorder = Recorder::instance();
    const locks::Lock lock(recorder.mutex);
    return recorder.registrations;
}

frameLmqIOService* ioService() {
    static auto* const service = new frameLmqIOService;
    return service;
}

bool inject(const frame::MsgMeta& header, const std::vector<std::uint8_t>& image, int* handlerResult,
            frame::TransportInfo transport) {
    const Registration registration = findRegistration(header);
    if (registration.handler == nullptr) {
        return false;
    }
    bool delivered = false;
    onInjectionThread([&] {
        platform_common::DecodedRecord record;
        std::string error;
        if (!platform_common::decodeRecord(*registration.table, image.data(), image.size(), record, error)) {
            return;
        }
        const int result = registration.handler(header, transport, record.record(), registration.context);
        if (handlerResult != nullptr) {
            *handlerResult = result;
        }
        delivered = true;
    });
    return delivered;
}

void onInjectionThread(const std::function<void()>& function) {
    InjectionThread::instance().run(function);
}

void setStartResult(int result) {
    Recorder& recorder = Recorder::instance();
    const locks::Lock lock(recorder.mutex);
    recorder.startResult = result;
}

void setSetUpResult(int result) {
    Recorder& recorder = Recorder::instance();
    const locks::Lock lock(recorder.mutex);
    recorder.setUpResult = result;
}

void setStopResult(int result) {
    Recorder& recorder = Recorder::instance();
    const locks::Lock lock(recorder.mutex);
    recorder.stopResult = result;
}

}  // namespace recording

namespace platform_common {

frameLmqIOService* createIOService(frame::AbstractMarshallingImpl&) {
    return new frameLmqIOService;
}

int startIOService(frameLmqIOService* service) {
    recording::Recorder& recorder = recording::Recorder::instance();
    const locks::Lock lock(recorder.mutex);
    if (service != nullptr) {
        service->started = recorder.startResult >= 0;
    }
    return recorder.startResult;
}

int setUpIOService(frameLmqIOService*) {
    recording::Recorder& recorder = recording::Recorder::instance();
    const locks::Lock lock(recorder.mutex);
    return recorder.setUpResult;
}

/// Waits for an empty task on the injection thread, so that all earlier injections have been handled.
int stopIOService(frameLmqIOService* service) {
    if (service != nullptr && service->started) {
        service->started = false;
        recording::onInjectionThread([] {});
    }
    recording::Recorder& recorder = recording::Recorder::instance();
    const locks::Lock lock(recorder.mutex);
    return recorder.stopResult;
}

void destroyIOService(frameLmqIOService* service) {
    recording::Recorder& recorder = recording::Recorder::instance();
    {
        const locks::Lock lock(recorder.mutex);
        auto& known = recorder.registrations;
        known.erase(std::remove_if(known.begin(), known.end(),
                                   [service](const auto& registration) { return registration.service == service; }),
                    known.end());
    }
    delete service;
}

}  // namespace platform_common

int frameLmqIOServiceSendStructure(frameLmqIOService* service, frame::MsgIds& ids, const frame::MsgMeta& header,
                                   int reserved, const ovxEndianTable* table, const void* record) {
    recording::SentMessage message{service, ids, header, reserved, table, {}, {}};
    message.wire = platform_common::encodeRecord(*table, record);
    message.record = std::make_shared<platform_common::DecodedRecord>();
    std::string error;
    if (!platform_common::decodeRecord(*table, message.wire.data(), message.wire.size(), *message.record, error)) {
        return -1;
    }
    recording::Recorder& recorder = recording::Recorder::instance();
    std::function<int(const recording::SentMessage&)> action;
    int result = 0;
    {
        const locks::Lock lock(recorder.mutex);
        recorder.sent.push_back(message);
        action = recorder.sendAction;
        result = recorder.sendResult;
    }
    recorder.changed.notify_all();
    return action ? action(message) : result;
}

int frameLmqIOServiceRegisterMessageHandlerFunction(frameLmqIOService* service, const frame::MsgMeta& header,
                                                    frameLmqMessageHandler handler, void* context,
                                                    const ovxEndianTable* table) {
    if (service == nullptr || handler == nullptr || table == nullptr) {
        return -1;
    }
    recording::Recorder& recorder = recording::Recorder::instance();
    const locks::Lock lock(recorder.mutex);
    recorder.registrations.push_back({service, header, handler, context, table});
    return 0;
}
