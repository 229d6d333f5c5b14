// The list of all presences of the process, oldest first.
#include "service_presence.h"

#include <algorithm>
#include <deque>

#include "locks/lock.h"

namespace lo::browserdvbservice {

namespace {

/// A command returns right after its send, so only a platform that is stuck in a send takes this long.
constexpr std::chrono::seconds kLongestCommand{1};

class Presences {
public:
    static Presences& instance() {
        static auto* const presences = new Presences;
        return *presences;
    }

    ServicePresence& add(ServiceInterface& interface) {
        const locks::Lock lock(mutex);
        return presences.emplace_back(interface);
    }

    ServicePresence& latest(ServiceInterface& interface) {
        const locks::Lock lock(mutex);
        const auto found =
            std::find_if(presences.rbegin(), presences.rend(),
                         [&interface](const ServicePresence& known) { return &known.interface == &interface; });
        return found == presences.rend() ? presences.emplace_back(interface) : *found;
    }

private:
    std::mutex mutex;
    std::deque<ServicePresence> presences GUARDED_BY(mutex);
};

}  // namespace

ServicePresence& ServicePresence::of(ServiceInterface& interface) {
    return Presences::instance().latest(interface);
}

void ServicePresence::begin(ServiceInterface& interface) {
    Presences::instance().add(interface);
}

void ServicePresence::end(ServiceInterface& interface) {
    of(interface).occupancy.close(kLongestCommand);
}

}  // namespace lo::browserdvbservice
