// The keys of the engine's own.
#include "engine_keys.h"

#include <map>
#include <string>

namespace tvbrowser {

std::optional<EngineKey> engineKey(const RemoteKey& key) {
    static const std::map<std::string, EngineKey> kKeys{
        {"LEFT", {0xFF51, 113}}, {"UP", {0xFF52, 111}}, {"RIGHT", {0xFF53, 114}}, {"DOWN", {0xFF54, 116}},
        {"ENTER", {0xFF0D, 36}}, {"0", {'0', 19}},      {"1", {'1', 10}},         {"2", {'2', 11}},
        {"3", {'3', 12}},        {"4", {'4', 13}},      {"5", {'5', 14}},         {"6", {'6', 15}},
        {"7", {'7', 16}},        {"8", {'8', 17}},      {"9", {'9', 18}}};
    const auto found = kKeys.find(key.name);
    return found == kKeys.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace tvbrowser
