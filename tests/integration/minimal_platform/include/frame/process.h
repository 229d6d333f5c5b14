// The process: runs members, keeps the names of their interfaces.
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>

#include "frame/process_member.h"

namespace frame {

class Interface {
public:
    explicit Interface(void* of) : registered(of) {}
    void* pointer() const { return registered; }

private:
    void* registered;
};

class Process {
public:
    static Process getInstance();
    int getInterfaceReference(boost::shared_ptr<Interface>& reference, const std::string& name);
    int startAppMembersSync(AbstractApplication** (*create)());
};

}  // namespace frame
