// The process: runs the members, and keeps the interfaces that they publish to each other by name.
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>

#include "frame/api.h"
#include "frame/process_member.h"

namespace frame {

/// A published interface: returns the registered pointer unchanged.
class DTV_PLATFORM_API Interface {
public:
    Interface(std::string name, void* pointer);

    const std::string& name() const { return name_; }
    /// The registered pointer. Cast it to exactly the type that was registered.
    void* pointer() const { return pointer_; }

private:
    std::string name_;
    void* pointer_;
};

/// Creates members: a null-terminated array, allocated with calloc. The process frees the array and owns the members.
using CreateMembersFunction = AbstractApplication** (*)();

/// A handle of the one process object. Copies are cheap. Any thread may call any operation.
class DTV_PLATFORM_API Process {
public:
    static Process getInstance();

    /// Looks an interface up by name. 0 and the reference filled, or negative and the reference untouched.
    int getInterfaceReference(boost::shared_ptr<Interface>& reference, const std::string& name);

    /// Creates the members and takes each through attach, I/O service, setup and start before it returns. When a step
    /// fails, that member's completed steps are undone and it is destroyed, the members after it are not started, and
    /// the step's negative result is returned. Members run until stopAppMembers(), which the platform calls at process
    /// exit.
    int startAppMembersSync(CreateMembersFunction create);

    /// Stops, detaches and destroys all members, the last started first. For process exit and for tests.
    void stopAppMembers();
};

}  // namespace frame
