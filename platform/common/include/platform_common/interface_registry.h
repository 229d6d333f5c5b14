// InterfaceRegistry: the interfaces of this process by name.
// Threads: any.
// Blocks:  never.
// Locks:   mutex guards interfaces; it is not held during a call out.
// Fails:   -1, for the reasons given at each operation.
#pragma once

#include <boost/shared_ptr.hpp>
#include <mutex>
#include <string>
#include <vector>

#include "frame/process.h"
#include "locks/lock.h"

namespace platform_common {

class InterfaceRegistry {
public:
    /// The process's registry. Never destroyed: members unregister themselves during process exit.
    static InterfaceRegistry& instance();

    /// -1 for a null pointer, an empty name or a name that is taken.
    int add(void* pointer, const std::string& name);
    /// -1 when the pointer is not registered.
    int remove(const void* pointer);
    /// An empty reference when the name is unknown.
    boost::shared_ptr<frame::Interface> find(const std::string& name);

private:
    std::mutex mutex;
    std::vector<boost::shared_ptr<frame::Interface>> interfaces GUARDED_BY(mutex);
};

}  // namespace platform_common
