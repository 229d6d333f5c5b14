// A proxy on the recording platform, set up like in a process, but without one.
#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "app-browserdvbservice-proxy-main.h"
#include "inject_event.h"
#include "logged.h"
#include "recording_client.h"
#include "seams.h"

constexpr const char* kProxyFile = "app-browserdvbservice-proxy-main.cpp";

/// A proxy that gives access to its component mutex.
class OpenProxy : public lo::browserdvbservice::Proxy {
public:
    using Proxy::componentMutex;

    /// Whether any thread holds the mutex, the calling thread included.
    bool isLocked() {
        if (pthread_mutex_trylock(&componentMutex()) != 0) {
            return true;
        }
        pthread_mutex_unlock(&componentMutex());
        return false;
    }
};

class AProxy : public testing::Test {
protected:
    AProxy() {
        seams::reset();
        recording::reset();
        proxy = std::make_unique<OpenProxy>();
        proxy->setLmqIOModule(recording::ioService());
        recording::reset();
    }
    ~AProxy() override { seams::reset(); }

    boost::shared_ptr<RecordingClient> addedClient() {
        boost::shared_ptr<RecordingClient> client(new RecordingClient);
        EXPECT_EQ(proxy->addClient(client), 0);
        return client;
    }

    std::unique_ptr<OpenProxy> proxy;
};
