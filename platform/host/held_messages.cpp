// Holding messages, and the platform's operations for it.
#include "held_messages.h"

#include <algorithm>

#include "connection.h"
#include "dtv_optional/held_messages.h"
#include "io_service.h"

namespace host {

HeldMessages& HeldMessages::instance() {
    static auto* const only = new HeldMessages();
    return *only;
}

bool HeldMessages::begin() {
    std::thread::id nobody;
    return holder.compare_exchange_strong(nobody, std::this_thread::get_id(), std::memory_order_acquire);
}

void HeldMessages::add(const std::shared_ptr<IOService>& service, const std::shared_ptr<Connection>& connection) {
    const auto isIt = [&connection](const auto& each) { return each.second == connection; };
    if (std::none_of(connections.begin(), connections.end(), isIt)) {
        connections.emplace_back(service, connection);
    }
}

void HeldMessages::end() {
    for (const auto& [service, connection] : connections) {
        service->sendHeld(connection);
    }
    connections.clear();
    holder.store(std::thread::id(), std::memory_order_release);
}

}  // namespace host

bool dtv_optional::holdMessages() {
    return host::HeldMessages::instance().begin();
}

void dtv_optional::sendHeldMessages() {
    host::HeldMessages::instance().end();
}
