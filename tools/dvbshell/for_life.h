// Keeps objects for the life of the process, because the delivery thread or a replay may call them at any time.
#pragma once

#include <vector>

namespace dvbshell {

/// Keeps the object reachable, so that leak checkers do not report it, and never deletes it.
template <typename Object>
Object& forLife(Object* object) {
    static auto& kept = *new std::vector<Object*>;
    kept.push_back(object);
    return *object;
}

}  // namespace dvbshell
