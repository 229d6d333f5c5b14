// The wrapped functions: callers of f reach __wrap_f; __real_f is the original f.
#include "seams.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <optional>

#include "locks/lock.h"
#include "ovx/debug.h"

namespace seams {

namespace {

struct State {
    bool watchingHeap = false;
    std::optional<std::size_t> failing;
    std::vector<std::size_t> sizes;
    std::vector<void*> held;
    const pthread_mutex_t* watched = nullptr;
    std::size_t locked = 0;
    std::function<void()> lineHook;
    std::vector<const frame::MsgIds*> ids;
    std::optional<int> registrationResult;
    LookUp lookUp;
    std::optional<int> publishResult;
    std::function<int()> baseStep;
    std::function<void()> nameHook;
};

std::mutex guarding;

/// Never destroyed: memory is still freed during process exit.
State& state() REQUIRES(guarding) {
    static auto* const all = new State;
    return *all;
}

/// A copy of one member of the state.
template <typename Member>
Member now(Member State::*member) {
    const locks::Lock lock(guarding);
    return state().*member;
}

template <typename Member, typename Value>
void set(Member State::*member, Value value) {
    const locks::Lock lock(guarding);
    state().*member = std::move(value);
}

/// Whether this allocation must fail. Counts the allocations that succeed.
bool takeFailure(std::size_t size) {
    const locks::Lock lock(guarding);
    if (!state().watchingHeap) {
        return false;
    }
    if (state().failing == state().sizes.size()) {
        state().failing.reset();
        return true;
    }
    state().sizes.push_back(size);
    return false;
}

void* keep(void* buffer) {
    const locks::Lock lock(guarding);
    if (state().watchingHeap) {
        state().held.push_back(buffer);
    }
    return buffer;
}

}  // namespace

void reset() {
    const locks::Lock lock(guarding);
    state() = State();
}

void watchHeap() {
    const locks::Lock lock(guarding);
    state().watchingHeap = true;
    state().failing.reset();
    state().sizes.clear();
    state().held.clear();
}

std::vector<std::size_t> allocations() {
    return now(&State::sizes);
}
std::vector<void*> heldBuffers() {
    return now(&State::held);
}
void failAllocation(std::size_t number) {
    set(&State::failing, number);
}

void watchMutex(const pthread_mutex_t& mutex) {
    const locks::Lock lock(guarding);
    state().watched = &mutex;
    state().locked = 0;
}

std::size_t timesLocked() {
    return now(&State::locked);
}
void setLineHook(std::function<void()> hook) {
    set(&State::lineHook, std::move(hook));
}
std::vector<const frame::MsgIds*> sentIds() {
    return now(&State::ids);
}
void setRegistrationResult(int result) {
    set(&State::registrationResult, result);
}
void setLookUp(LookUp lookUp) {
    set(&State::lookUp, std::move(lookUp));
}
void setPublishResult(int result) {
    set(&State::publishResult, result);
}
void setBaseStep(std::function<int()> step) {
    set(&State::baseStep, std::move(step));
}
void setNameHook(std::function<void()> hook) {
    set(&State::nameHook, std::move(hook));
}

}  // namespace seams

using seams::State;

extern "C" {

void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void __real_free(void* buffer);

void* __wrap_malloc(std::size_t size) {
    if (seams::takeFailure(size)) {
        return nullptr;
    }
    void* const buffer = __real_malloc(size);
    if (seams::now(&State::watchingHeap)) {
        std::memset(buffer, 0xA5, size);
    }
    return seams::keep(buffer);
}

void* __wrap_calloc(std::size_t count, std::size_t size) {
    return seams::takeFailure(count * size) ? nullptr : seams::keep(__real_calloc(count, size));
}

void __wrap_free(void* buffer) {
    {
        const locks::Lock lock(seams::guarding);
        std::vector<void*>& held = seams::state().held;
        held.erase(std::remove(held.begin(), held.end(), buffer), held.end());
    }
    __real_free(buffer);
}

int __real_ovxDebugCheckLevelGetFrameAndChunk(std::uint32_t level, ovxDebugFrame** frame, ovxDebugChunk** chunk);

int __wrap_ovxDebugCheckLevelGetFrameAndChunk(std::uint32_t level, ovxDebugFrame** frame, ovxDebugChunk** chunk) {
    if (const std::function<void()> hook = seams::now(&State::lineHook)) {
        hook();
    }
    return __real_ovxDebugCheckLevelGetFrameAndChunk(level, frame, chunk);
}

int __real_frameLmqIOServiceSendStructure(frameLmqIOService* service, frame::MsgIds& ids, const frame::MsgMeta& header,
                                          int reserved, const ovxEndianTable* table, const void* record);

int __wrap_frameLmqIOServiceSendStructure(frameLmqIOService* service, frame::MsgIds& ids, const frame::MsgMeta& header,
                                          int reserved, const ovxEndianTable* table, const void* record) {
    {
        const locks::Lock lock(seams::guarding);
        seams::state().ids.push_back(&ids);
    }
    return __real_frameLmqIOServiceSendStructure(service, ids, header, reserved, table, record);
}

int __real_frameLmqIOServiceRegisterMessageHandlerFunction(frameLmqIOService* service, const frame::MsgMeta& header,
                                                           frameLmqMessageHandler handler, void* context,
                                                           const ovxEndianTable* table);

int __wrap_frameLmqIOServiceRegisterMessageHandlerFunction(frameLmqIOService* service, const frame::MsgMeta& header,
                                                           frameLmqMessageHandler handler, void* context,
                                                           const ovxEndianTable* table) {
    const int result = __real_frameLmqIOServiceRegisterMessageHandlerFunction(service, header, handler, context, table);
    return seams::now(&State::registrationResult).value_or(result);
}
}

// Class members have their mangled names, which are the same for both widths.
#define STRING "NSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE"
#define LOCK "_ZN7ltGuardC1ER15pthread_mutex_t"
#define LOOK_UP "_ZN5frame7Process21getInterfaceReferenceERN5boost10shared_ptrINS_9InterfaceEEERK" STRING
#define PUBLISH "_ZN5frame21AbstractProcessMember17registerInterfaceEPvRK" STRING
#define SET_NAME "_ZN5frame23AbstractMarshallingImpl14setServiceNameERK" STRING
#define SET_UP "_ZN5frame23AbstractMarshallingImpl16performSetupDoneEv"
#define START "_ZN5frame23AbstractMarshallingImpl15performStartingEv"
#define STOP "_ZN5frame23AbstractMarshallingImpl15performStoppingEv"

// In the ARM ABI a constructor returns its object.
void* realLock(void* guard, pthread_mutex_t& mutex) asm("__real_" LOCK);
void* wrappedLock(void* guard, pthread_mutex_t& mutex) asm("__wrap_" LOCK);

void* wrappedLock(void* guard, pthread_mutex_t& mutex) {
    realLock(guard, mutex);
    const locks::Lock lock(seams::guarding);
    seams::state().locked += &mutex == seams::state().watched ? 1 : 0;
    return guard;
}

using Reference = boost::shared_ptr<frame::Interface>;
int realLookUp(frame::Process* process, Reference& reference, const std::string& name) asm("__real_" LOOK_UP);
int wrappedLookUp(frame::Process* process, Reference& reference, const std::string& name) asm("__wrap_" LOOK_UP);

int wrappedLookUp(frame::Process* process, Reference& reference, const std::string& name) {
    const seams::LookUp lookUp = seams::now(&State::lookUp);
    return lookUp ? lookUp(reference, name) : realLookUp(process, reference, name);
}

using Member = frame::AbstractMarshallingImpl;
int realPublish(Member* member, void* pointer, const std::string& name) asm("__real_" PUBLISH);
int wrappedPublish(Member* member, void* pointer, const std::string& name) asm("__wrap_" PUBLISH);

int wrappedPublish(Member* member, void* pointer, const std::string& name) {
    const int result = realPublish(member, pointer, name);
    return seams::now(&State::publishResult).value_or(result);
}

void realSetName(Member* member, const std::string& name) asm("__real_" SET_NAME);
void wrappedSetName(Member* member, const std::string& name) asm("__wrap_" SET_NAME);

void wrappedSetName(Member* member, const std::string& name) {
    if (const std::function<void()> hook = seams::now(&State::nameHook)) {
        hook();
    }
    realSetName(member, name);
}

int realSetUp(Member* member) asm("__real_" SET_UP);
int wrappedSetUp(Member* member) asm("__wrap_" SET_UP);
int realStart(Member* member) asm("__real_" START);
int wrappedStart(Member* member) asm("__wrap_" START);
int realStop(Member* member) asm("__real_" STOP);
int wrappedStop(Member* member) asm("__wrap_" STOP);

namespace {

int stepOr(int (*real)(Member*), Member* member) {
    const std::function<int()> step = seams::now(&State::baseStep);
    return step ? step() : real(member);
}

}  // namespace

int wrappedSetUp(Member* member) {
    return stepOr(&realSetUp, member);
}
int wrappedStart(Member* member) {
    return stepOr(&realStart, member);
}
int wrappedStop(Member* member) {
    return stepOr(&realStop, member);
}
