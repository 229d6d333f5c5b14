// The test's own catcher, with a client registered with the AIT API.
#pragma once

#include "ait_fixture.h"
#include "eventually.h"
#include "seams.h"

namespace velmora::dvbservice {

/// Gives tests access to the catcher's private members.
struct BrowserAITCatcherTestAccess {
    static std::size_t storages(BrowserAITCatcher& catcher) {
        const locks::Lock lock(catcher.stateLock);
        return catcher.aitStorages.size();
    }
    static ChannelInfo currentChannel(BrowserAITCatcher& catcher) {
        const locks::Lock lock(catcher.stateLock);
        return *catcher.currentChannel;
    }
    static pthread_mutex_t& mutex(BrowserAITCatcher& catcher) { return catcher.mutex; }
};

}  // namespace velmora::dvbservice

class ACatcher : public testing::Test {
protected:
    ACatcher() {
        seams::reset();
        api->registerClient(&client);
        recording::reset();
    }
    ~ACatcher() override {
        seams::reset();
        api->unRegisterClient(nullptr);
    }

    int feed(const Bytes& section) { return catcher.updateAIT(asText(section)); }
    bool deliveredEventually(std::size_t count) {
        return eventually([&] { return client.deliveries().size() == count; });
    }
    /// Whether any thread holds the delivery mutex, the calling thread included.
    bool isDelivering() {
        pthread_mutex_t& mutex = velmora::dvbservice::BrowserAITCatcherTestAccess::mutex(catcher);
        if (pthread_mutex_trylock(&mutex) != 0) {
            return true;
        }
        pthread_mutex_unlock(&mutex);
        return false;
    }

    static constexpr const char* kFile = "browser_AIT_catcher.cpp";

    velmora::dvbservice::BrowserAITCatcher catcher;
    velmora::dvbservice::DvbAITSectionAPI* api = velmora::dvbservice::DvbAITSectionAPI::getInstance();
    KeepingAitClient client;
};

using Delivery = KeepingAitClient::Delivery;
