// The test's own service object on the recording platform, connected to its own proxy.
#pragma once

#include <gtest/gtest.h>

#include "browser_dvb_apis.h"
#include "browser_dvb_service.h"
#include "hex_text.h"
#include "inject_event.h"
#include "logged.h"
#include "service_access.h"

constexpr const char* kTag = "SectionFilterService";
constexpr std::uint32_t kOrdinary = 0x5F0FA0;
constexpr std::uint32_t kFailure = 0x5F03E8;
constexpr std::uint32_t kAlways = 0x5F0001;

namespace messages = lo::browserdvbservice::messages;

class AServiceObject : public testing::Test {
protected:
    AServiceObject() {
        recording::reset();
        service.reset(new velmora::dvbservice::BrowserDVBService);
        service->start();
        velmora::dvbservice::BrowserDvbAPI::getInstance();
        recording::reset();
    }
    ~AServiceObject() override { frame::Process::getInstance().stopAppMembers(); }

    /// The lines of the library's own units, without trace lines and without the RPC layer's lines.
    static std::vector<recording::LogLine> lines() {
        std::vector<recording::LogLine> own;
        for (recording::LogLine& line : logged::withoutTraces()) {
            if (line.file.rfind("browser_dvb", 0) == 0) {
                own.push_back(std::move(line));
            }
        }
        return own;
    }

    /// The only message that was sent.
    static recording::SentMessage theSent() {
        const std::vector<recording::SentMessage> messages = recording::sent();
        EXPECT_EQ(messages.size(), 1U);
        return messages.empty() ? recording::SentMessage{} : messages.front();
    }

    boost::shared_ptr<velmora::dvbservice::BrowserDVBService> service;
};

/// A trace pair as logged::traces() shows it.
inline std::vector<std::string> tracePair(const std::string& function, const std::string& file) {
    return {"[TRACE -> " + function + "(IN)] " + file + ":" + function + "() \n",
            "[TRACE <- " + function + "(OUT)] " + file + ":" + function + "() \n"};
}
