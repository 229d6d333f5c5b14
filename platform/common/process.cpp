// The process model: interface registry and lifecycle of the members.
#include "frame/process.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "platform_common/interface_registry.h"
#include "platform_common/io_backend.h"

namespace platform_common {

InterfaceRegistry& InterfaceRegistry::instance() {
    static auto* const registry = new InterfaceRegistry;
    return *registry;
}

int InterfaceRegistry::add(void* pointer, const std::string& name) {
    const locks::Lock lock(mutex);
    const bool taken =
        std::any_of(interfaces.begin(), interfaces.end(), [&name](const auto& known) { return known->name() == name; });
    if (pointer == nullptr || name.empty() || taken) {
        return -1;
    }
    interfaces.emplace_back(new frame::Interface(name, pointer));
    return 0;
}

int InterfaceRegistry::remove(const void* pointer) {
    const locks::Lock lock(mutex);
    const auto kept = std::remove_if(interfaces.begin(), interfaces.end(),
                                     [pointer](const auto& known) { return known->pointer() == pointer; });
    if (kept == interfaces.end()) {
        return -1;
    }
    interfaces.erase(kept, interfaces.end());
    return 0;
}

boost::shared_ptr<frame::Interface> InterfaceRegistry::find(const std::string& name) {
    const locks::Lock lock(mutex);
    const auto found = std::find_if(interfaces.begin(), interfaces.end(),
                                    [&name](const auto& known) { return known->name() == name; });
    return found == interfaces.end() ? boost::shared_ptr<frame::Interface>() : *found;
}

namespace {

/// A member and its transport. The destructor undoes exactly the steps that succeeded.
class RunningMember {
public:
    explicit RunningMember(frame::AbstractApplication* newMember) : member(newMember) {}
    RunningMember(const RunningMember&) = delete;
    RunningMember& operator=(const RunningMember&) = delete;

    ~RunningMember() {
        if (started) {
            member->stop();
        }
        stopIOService(service);
        if (attached) {
            member->detachProcess();
        }
        member.reset();
        destroyIOService(service);
    }

    int bringUp(frame::Process& process) {
        int result = member->attachProcess(process);
        attached = result >= 0;
        if (result >= 0) {
            result = giveIOService();
        }
        if (result >= 0) {
            result = member->setupDone();
        }
        if (result >= 0) {
            result = member->start();
            started = result >= 0;
        }
        return result;
    }

private:
    int giveIOService() {
        auto* const marshalling = dynamic_cast<frame::AbstractMarshallingImpl*>(member.get());
        if (marshalling == nullptr) {
            return 0;
        }
        service = createIOService(*marshalling);
        return service == nullptr ? -1 : marshalling->setLmqIOModule(service);
    }

    std::unique_ptr<frame::AbstractApplication> member;
    frameLmqIOService* service = nullptr;
    bool attached = false;
    bool started = false;
};

/// The running members. The mutex is not held during a member's steps.
class Members {
public:
    static Members& instance() {
        static Members members;
        return members;
    }

    ~Members() { stopAll(); }

    void add(std::unique_ptr<RunningMember> member) {
        const locks::Lock lock(mutex);
        running.push_back(std::move(member));
    }

    void stopAll() {
        std::vector<std::unique_ptr<RunningMember>> stopping;
        {
            const locks::Lock lock(mutex);
            stopping.swap(running);
        }
        while (!stopping.empty()) {
            stopping.pop_back();
        }
    }

private:
    std::mutex mutex;
    std::vector<std::unique_ptr<RunningMember>> running GUARDED_BY(mutex);
};

/// Gives every member of the array an owner before the first step runs.
std::vector<std::unique_ptr<RunningMember>> adopt(frame::AbstractApplication** array) {
    std::vector<std::unique_ptr<RunningMember>> members;
    for (frame::AbstractApplication** member = array; member != nullptr && *member != nullptr; ++member) {
        members.push_back(std::make_unique<RunningMember>(*member));
    }
    std::free(array);
    return members;
}

}  // namespace

}  // namespace platform_common

namespace frame {

Interface::Interface(std::string name, void* pointer) : name_(std::move(name)), pointer_(pointer) {}

Process Process::getInstance() {
    return {};
}

int Process::getInterfaceReference(boost::shared_ptr<Interface>& reference, const std::string& name) {
    boost::shared_ptr<Interface> found = platform_common::InterfaceRegistry::instance().find(name);
    if (!found) {
        return -1;
    }
    reference = std::move(found);
    return 0;
}

int Process::startAppMembersSync(CreateMembersFunction create) {
    platform_common::Members& running = platform_common::Members::instance();
    for (std::unique_ptr<platform_common::RunningMember>& member : platform_common::adopt(create())) {
        const int result = member->bringUp(*this);
        if (result < 0) {
            return result;
        }
        running.add(std::move(member));
    }
    return 0;
}

void Process::stopAppMembers() {
    platform_common::Members::instance().stopAll();
}

}  // namespace frame
