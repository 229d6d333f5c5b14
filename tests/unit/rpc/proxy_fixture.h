// A proxy on the recording platform, set up as the process model would, without the process.
#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "app-browserdvbservice-proxy-main.h"
#include "inject_event.h"
#include "logged.h"
#include "recording_client.h"

constexpr const char* kProxyFile = "app-browserdvbservice-proxy-main.cpp";

class AProxy : public testing::Test {
protected:
    AProxy() {
        recording::reset();
        proxy = std::make_unique<lo::browserdvbservice::Proxy>();
        proxy->setLmqIOModule(recording::ioService());
        recording::reset();
    }

    boost::shared_ptr<RecordingClient> addedClient() {
        boost::shared_ptr<RecordingClient> client(new RecordingClient);
        EXPECT_EQ(proxy->addClient(client), 0);
        return client;
    }

    std::unique_ptr<lo::browserdvbservice::Proxy> proxy;
};
