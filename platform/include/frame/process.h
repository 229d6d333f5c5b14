// The process: runs the members and keeps the names under which they publish interfaces to each other.
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>

#include "frame/api.h"
#include "frame/process_member.h"

namespace frame {

/// A published interface: gives back the pointer that was registered, unchanged.
class DTV_PLATFORM_API Interface {
public:
    Interface(std::string name, void* pointer);

    const std::string& name() const { return name_; }
    /// The registered pointer. It points to whatever type was registered: cast it to exactly that.
    void* pointer() const { return pointer_; }

private:
    std::string name_;
    void* pointer_;
};

/// Makes members: a null-terminated array, allocated with calloc. The process frees the array and owns the members.
using CreateMembersFunction = AbstractApplication** (*)();

/// A handle of the one process object; copying it is cheap. All operations may be called on any thread.
class DTV_PLATFORM_API Process {
public:
    static Process getInstance();

    /// Looks an interface up by name. 0 and the reference filled, or negative and the reference untouched.
    int getInterfaceReference(boost::shared_ptr<Interface>& reference, const std::string& name);

    /// Creates the members and takes each through attach, I/O service, setup and start before it returns. A member
    /// whose step fails is stopped as far as it had come and destroyed, the members behind it are not started, and the
    /// step's negative result is returned. Members run until stopAppMembers(), which the platform calls at process
    /// exit.
    int startAppMembersSync(CreateMembersFunction create);

    /// Stops, detaches and destroys all members, last started first. For the end of a process, and for tests.
    void stopAppMembers();
};

}  // namespace frame
