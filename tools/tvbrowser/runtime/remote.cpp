// The table of the remote control's keys.
#include "remote.h"

namespace tvbrowser {

const std::array<RemoteKey, kRemoteKeyCount> kRemoteKeys = {{
    {"RED", 403, keyset::kRed, false, TelevisionKey::startPresent},
    {"GREEN", 404, keyset::kGreen, false},
    {"YELLOW", 405, keyset::kYellow, false},
    {"BLUE", 406, keyset::kBlue, false},
    {"LEFT", 37, keyset::kNavigation, true},
    {"UP", 38, keyset::kNavigation, true},
    {"RIGHT", 39, keyset::kNavigation, true},
    {"DOWN", 40, keyset::kNavigation, true},
    {"ENTER", 13, keyset::kNavigation, true},
    {"BACK", 461, keyset::kNavigation, false},
    {"PLAY", 415, keyset::kVcr, false},
    {"PAUSE", 19, keyset::kVcr, false},
    {"PLAY_PAUSE", 463, keyset::kVcr, false},
    {"STOP", 413, keyset::kVcr, false},
    {"REWIND", 412, keyset::kVcr, false},
    {"FAST_FWD", 417, keyset::kVcr, false},
    {"INFO", 457, keyset::kInfo, false},
    {"0", 48, keyset::kNumeric, true},
    {"1", 49, keyset::kNumeric, true},
    {"2", 50, keyset::kNumeric, true},
    {"3", 51, keyset::kNumeric, true},
    {"4", 52, keyset::kNumeric, true},
    {"5", 53, keyset::kNumeric, true},
    {"6", 54, keyset::kNumeric, true},
    {"7", 55, keyset::kNumeric, true},
    {"8", 56, keyset::kNumeric, true},
    {"9", 57, keyset::kNumeric, true},
    {"CHANNEL_UP", 427, 0, false, TelevisionKey::nextChannel},
    {"CHANNEL_DOWN", 428, 0, false, TelevisionKey::previousChannel},
    {"EXIT", 0, 0, false, TelevisionKey::exit},
}};

const RemoteKey* findKey(const std::string& name) {
    for (const RemoteKey& key : kRemoteKeys) {
        if (key.name == name) {
            return &key;
        }
    }
    return nullptr;
}

}  // namespace tvbrowser
