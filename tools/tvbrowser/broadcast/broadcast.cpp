// The calls.
#include "broadcast.h"

namespace tvbrowser {

class Broadcast::Inside {};

Broadcast::Broadcast(const Library&, Post, Sink) : inside(std::make_shared<Inside>()) {}
Broadcast::~Broadcast() = default;

nlohmann::json Broadcast::call(const std::string& name, const nlohmann::json&) {
    throw BadCall("no call " + name);
}

std::optional<si::Triplet> Broadcast::presented() const {
    return std::nullopt;
}

bool Broadcast::isConnected() const {
    return false;
}

}  // namespace tvbrowser
