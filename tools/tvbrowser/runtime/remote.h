// The keys of the remote control: their names, their codes in a page, and the keyset that each belongs to.
// Threads: any.
// Blocks:  never.
// Fails:   findKey() gives null for a name that no key has.
#pragma once

#include <array>
#include <string>

#include "keyset.h"

namespace tvbrowser {

/// What the television does with a key that no page gets.
enum class TelevisionKey { none, startPresent, exit, nextChannel, previousChannel };

struct RemoteKey {
    const char* name;
    unsigned int code;  ///< keyCode of the page's event
    KeyMask keyset;     ///< the bit of its keyset; 0: the key is the television's, and no page gets it
    bool isEngineKey;   ///< the engine makes this event itself; for others the page's script makes it
    TelevisionKey television = TelevisionKey::none;
};

constexpr std::size_t kRemoteKeyCount = 30;
extern const std::array<RemoteKey, kRemoteKeyCount> kRemoteKeys;

/// "RED", "CHANNEL_UP", "7", …
const RemoteKey* findKey(const std::string& name);

/// What the caller does with a key.
struct KeyAction {
    enum class Kind {
        none,            ///< nothing more
        page,            ///< send it to the page
        nextChannel,     ///< tune to the next channel of the list
        previousChannel  ///< tune to the channel before
    };
    Kind kind = Kind::none;
    const RemoteKey* key = nullptr;
};

}  // namespace tvbrowser
