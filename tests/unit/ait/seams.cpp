// The wrapped functions: callers of f reach __wrap_f; __real_f is the original f.
#include "seams.h"

#include <cstdint>
#include <mutex>

#include "browser_AIT_catcher.h"
#include "dvbaitsection_apis.h"
#include "locks/lock.h"
#include "ovx/osal_thread.h"
#include "velmora/base/wait_for_instance.h"

namespace seams {

namespace {

struct State {
    std::vector<std::string> steps;
    std::vector<const pthread_attr_t*> attributes;
    bool detachingFails = false;
    bool keeping = false;
    std::vector<Worker> workers;
    bool apiHidden = false;
    bool catcherHidden = false;
    int waits = 0;
};

std::mutex guarding;

/// Never destroyed: replays may end after the tests.
State& state() REQUIRES(guarding) {
    static auto* const all = new State;
    return *all;
}

template <typename Member>
Member now(Member State::*member) {
    const locks::Lock lock(guarding);
    return state().*member;
}

template <typename Member>
void set(Member State::*member, Member value) {
    const locks::Lock lock(guarding);
    state().*member = value;
}

void note(const char* step, const pthread_attr_t* attributes) {
    const locks::Lock lock(guarding);
    state().steps.emplace_back(step);
    state().attributes.push_back(attributes);
}

bool isDetached(const pthread_attr_t* attributes) {
    int kind = PTHREAD_CREATE_JOINABLE;
    if (attributes != nullptr) {
        pthread_attr_getdetachstate(attributes, &kind);
    }
    return kind == PTHREAD_CREATE_DETACHED;
}

}  // namespace

void reset() {
    const locks::Lock lock(guarding);
    state() = State();
}

std::vector<std::string> threadSteps() {
    return now(&State::steps);
}
std::vector<const pthread_attr_t*> threadAttributes() {
    return now(&State::attributes);
}
void failDetaching() {
    set(&State::detachingFails, true);
}
void keepWorkers() {
    set(&State::keeping, true);
}
std::vector<Worker> keptWorkers() {
    return now(&State::workers);
}
void hideApi() {
    set(&State::apiHidden, true);
}
void hideCatcher() {
    set(&State::catcherHidden, true);
}
int waitsForInstance() {
    return now(&State::waits);
}

}  // namespace seams

using seams::State;

extern "C" {

int __real__ovxOsalPOSIX_pthread_attr_init(pthread_attr_t* attributes);
int __real__ovxOsalPOSIX_pthread_attr_destroy(pthread_attr_t* attributes);
int __real_pthread_attr_setdetachstate(pthread_attr_t* attributes, int kind);
int __real__ovxOsalPOSIX_pthread_create_line(pthread_t* thread, const pthread_attr_t* attributes, void* (*entry)(void*),
                                             void* argument, const char* file, int line);

int __wrap__ovxOsalPOSIX_pthread_attr_init(pthread_attr_t* attributes) {
    seams::note("init", attributes);
    return __real__ovxOsalPOSIX_pthread_attr_init(attributes);
}

int __wrap__ovxOsalPOSIX_pthread_attr_destroy(pthread_attr_t* attributes) {
    seams::note("destroy", attributes);
    return __real__ovxOsalPOSIX_pthread_attr_destroy(attributes);
}

int __wrap_pthread_attr_setdetachstate(pthread_attr_t* attributes, int kind) {
    seams::note("detach", attributes);
    return seams::now(&State::detachingFails) ? 22 : __real_pthread_attr_setdetachstate(attributes, kind);
}

int __wrap__ovxOsalPOSIX_pthread_create_line(pthread_t* thread, const pthread_attr_t* attributes, void* (*entry)(void*),
                                             void* argument, const char* file, int line) {
    seams::note("create", attributes);
    if (!seams::now(&State::keeping)) {
        return __real__ovxOsalPOSIX_pthread_create_line(thread, attributes, entry, argument, file, line);
    }
    const locks::Lock lock(seams::guarding);
    seams::state().workers.push_back({entry, argument, file, line, seams::isDetached(attributes)});
    return 0;
}
}

// C++ functions have their mangled names.
#define API "_ZN7velmora10dvbservice16DvbAITSectionAPI11getInstanceEv"
#define CATCHER "_ZN7velmora10dvbservice17BrowserAITCatcher11getInstanceEv"
#if INTPTR_MAX == INT64_MAX
#define WAIT "_ZN7velmora4base8internal15WaitForInstanceEPl"
#else
#define WAIT "_ZN7velmora4base8internal15WaitForInstanceEPi"
#endif

using velmora::dvbservice::BrowserAITCatcher;
using velmora::dvbservice::DvbAITSectionAPI;

DvbAITSectionAPI* realApi() asm("__real_" API);
DvbAITSectionAPI* wrappedApi() asm("__wrap_" API);
BrowserAITCatcher* realCatcher() asm("__real_" CATCHER);
BrowserAITCatcher* wrappedCatcher() asm("__wrap_" CATCHER);
std::intptr_t realWait(std::intptr_t* instance) asm("__real_" WAIT);
std::intptr_t wrappedWait(std::intptr_t* instance) asm("__wrap_" WAIT);

DvbAITSectionAPI* wrappedApi() {
    return seams::now(&State::apiHidden) ? nullptr : realApi();
}

BrowserAITCatcher* wrappedCatcher() {
    return seams::now(&State::catcherHidden) ? nullptr : realCatcher();
}

std::intptr_t wrappedWait(std::intptr_t* instance) {
    {
        const locks::Lock lock(seams::guarding);
        ++seams::state().waits;
    }
    return realWait(instance);
}
