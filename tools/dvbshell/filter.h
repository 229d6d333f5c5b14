// Filter: one open section filter, or the request of a service's PMT, whose sections come as events.
// Threads: one; sections arrive on the library's delivery thread through a queue.
// Blocks:  opening and closing until the DTV service has answered, at most ten seconds each. Without a service, closing
//          does not wait.
// Fails:   isOpen() tells.
#pragma once

#include <string>

#include "session.h"

namespace dvbshell {

/// The bits of a section that are compared: byte 0 is table_id, byte 1 the section's byte 3 and so on.
struct Pattern {
    std::string match;
    std::string mask;  ///< same length as `match`
};

/// Sections of one table.
Pattern tablePattern(std::uint8_t tableId);

class Filter {
public:
    /// Whose filter it is. When the service goes, the user is told only of the user's.
    enum class Owner { user, shell };
    /// A filter on a PID.
    Filter(Session& newSession, EventQueue& queue, unsigned int pid, const Pattern& pattern,
           Owner newOwner = Owner::user);
    /// The PMT of a service.
    Filter(Session& newSession, EventQueue& queue, unsigned int serviceId);
    Filter(const Filter&) = delete;
    Filter& operator=(const Filter&) = delete;
    ~Filter();
    bool isOpen() const { return opened; }

private:
    class Client;
    Session& session;
    Client& client;
    std::string name;  // of the library's session
    std::string what;
    bool ofPmt;
    Owner owner = Owner::user;
    bool opened = false;
};

/// A queue that lives as long as the process, because sections may still arrive when their filter has been closed.
EventQueue& newSectionQueue();

}  // namespace dvbshell
