// Which keys a keyset has.
#include "keyset.h"

#include <algorithm>

#include "remote.h"

namespace tvbrowser {

namespace {

/// The bits for which the remote control has keys.
KeyMask maskOfRemote() {
    KeyMask mask = 0;
    for (const RemoteKey& key : kRemoteKeys) {
        mask |= key.keyset;
    }
    return mask;
}

bool isForPages(unsigned int code) {
    return std::any_of(kRemoteKeys.begin(), kRemoteKeys.end(),
                       [code](const RemoteKey& key) { return key.code == code && key.keyset != 0; });
}

}  // namespace

Keyset Keyset::initial(bool isBroadcastRelated) {
    Keyset keyset;
    keyset.bits = isBroadcastRelated ? 0 : maskOfRemote();
    return keyset;
}

KeyMask Keyset::set(KeyMask wanted, const std::vector<unsigned int>& otherKeys) {
    bits = wanted & maskOfRemote();
    others.clear();
    if ((wanted & keyset::kOther) != 0) {
        std::copy_if(otherKeys.begin(), otherKeys.end(), std::back_inserter(others), isForPages);
    }
    bits |= others.empty() ? 0 : keyset::kOther;
    return bits;
}

bool Keyset::has(const RemoteKey& key) const {
    return (key.keyset & bits) != 0 || std::find(others.begin(), others.end(), key.code) != others.end();
}

}  // namespace tvbrowser
