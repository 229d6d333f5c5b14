// Lets tests observe and replace the AIT units' calls to the platform and to each other. The linker redirects the calls
// (--wrap), so the library needs no change. By default every call goes to its normal target.
// Threads: any.
// Locks:   one mutex guards the recorded data; it is not held during other calls.
#pragma once

#include <pthread.h>

#include <string>
#include <vector>

namespace seams {

/// Clears everything: calls go to their normal targets.
void reset();

// --- threads -------------------------------------------------------------------------------------------------------

/// The steps that created threads, in order: "init", "detach", "create", "destroy".
std::vector<std::string> threadSteps();
/// The attributes passed to each step; null for a thread created without attributes.
std::vector<const pthread_attr_t*> threadAttributes();
/// Makes setting the detached state fail.
void failDetaching();

/// A thread whose creation was requested.
struct Worker {
    void* (*entry)(void*);
    void* argument;
    std::string file;
    int line;
    bool isDetached;
    void run() const { entry(argument); }
};
/// Records threads instead of creating them; the caller gets a success.
void keepWorkers();
std::vector<Worker> keptWorkers();

// --- singletons ----------------------------------------------------------------------------------------------------

/// Makes getInstance() of the AIT API, or of the catcher, return null.
void hideApi();
void hideCatcher();
/// How often a thread has waited for an instance that is being created.
int waitsForInstance();

}  // namespace seams
