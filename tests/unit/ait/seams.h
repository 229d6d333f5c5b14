// The calls that the AIT units make of the platform and of each other, seen and answered by a test. The linker leads
// them here (--wrap), so the library has no part in it. Until a test asks for more, every call goes where it would.
// Threads: any.
// Locks:   one mutex guards what is kept; no other function is called while it is held.
#pragma once

#include <pthread.h>

#include <string>
#include <vector>

namespace seams {

/// Forgets everything: calls go where they would.
void reset();

// --- threads -------------------------------------------------------------------------------------------------------

/// What was done to make threads, in order: "init", "detach", "create", "destroy".
std::vector<std::string> threadSteps();
/// The attributes that the steps were given, one a step; null for a thread that is created without.
std::vector<const pthread_attr_t*> threadAttributes();
/// Lets setting the detached state fail.
void failDetaching();

/// A thread that was to be created.
struct Worker {
    void* (*entry)(void*);
    void* argument;
    std::string file;
    int line;
    bool isDetached;
    void run() const { entry(argument); }
};
/// Keeps threads instead of creating them; the caller is told that they run.
void keepWorkers();
std::vector<Worker> keptWorkers();

// --- singletons ----------------------------------------------------------------------------------------------------

/// Lets getInstance() of the AIT API, or of the catcher, find nothing.
void hideApi();
void hideCatcher();
/// How often somebody has waited for an instance that is being created.
int waitsForInstance();

}  // namespace seams
