// Objects that the delivery thread or a replay may reach at any time, and so live as long as the process.
#pragma once

#include <vector>

namespace dvbshell {

/// The object, never deleted and always reachable.
template <typename Object>
Object& forLife(Object* object) {
    static auto& kept = *new std::vector<Object*>;
    kept.push_back(object);
    return *object;
}

}  // namespace dvbshell
