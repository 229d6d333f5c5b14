// The application manager and the user: visibility, keyset, keys.
#include "application_manager.h"

namespace tvbrowser {

void ApplicationManager::show(Instance caller) {
    setVisible(caller, true);
}

void ApplicationManager::hide(Instance caller) {
    setVisible(caller, false);
}

void ApplicationManager::setVisible(Instance caller, bool isVisible) {
    if (!isRunning(caller) || life->application.isVisible == isVisible) {
        return;
    }
    life->application.isVisible = isVisible;
    host.setVisible(isVisible);
    host.applicationChanged(life->application);
}

KeyMask ApplicationManager::setKeyset(Instance caller, KeyMask mask, const std::vector<unsigned int>& otherKeys) {
    return isRunning(caller) ? life->keyset.set(mask, otherKeys) : 0;
}

bool ApplicationManager::goesToPage(const RemoteKey& key, bool isDown) {
    if (!life) {
        return false;
    }
    // A page that saw a key go down sees it go up, even if it has lost the key in between.
    if (!isDown) {
        return life->keysDown.erase(key.code) != 0;
    }
    if (!life->application.isVisible || !life->keyset.has(key)) {
        return false;
    }
    life->keysDown.insert(key.code);
    return true;
}

KeyAction ApplicationManager::zap(const RemoteKey& key) {
    if (life) {
        life->tune.giveWay();
    }
    const bool isForward = key.television == TelevisionKey::nextChannel;
    return {isForward ? KeyAction::Kind::nextChannel : KeyAction::Kind::previousChannel, &key};
}

KeyAction ApplicationManager::key(const RemoteKey& key, bool isDown) {
    if (goesToPage(key, isDown)) {
        return {KeyAction::Kind::page, &key};
    }
    switch (isDown ? key.television : TelevisionKey::none) {
        case TelevisionKey::nextChannel:
        case TelevisionKey::previousChannel:
            return zap(key);
        case TelevisionKey::exit:
            exit();
            break;
        case TelevisionKey::startPresent:
            if (!life) {
                startBest(ControlCode::present);
            }
            break;
        case TelevisionKey::none:
            break;
    }
    return {KeyAction::Kind::none, &key};
}

}  // namespace tvbrowser
