// The DVB API as a browser gets it, from the entry point, on the recording platform. Its objects exist once per
// process, so each test first sets the state that it checks.
#pragma once

#include <gtest/gtest.h>

#include "browser_dvb_apis.h"
#include "browser_dvb_service.h"
#include "dvb_api_interface.h"
#include "hex_text.h"
#include "inject_event.h"
#include "logged.h"
#include "recording_listener.h"

namespace messages = lo::browserdvbservice::messages;

class TheDvbApi : public testing::Test {
protected:
    TheDvbApi() {
        velmora::dtv::IDTVUnknown* found = nullptr;
        EXPECT_EQ(DTVAPI_QueryInterface("DvbAPIInterface", &found), 0);
        api = static_cast<velmora::dtv::DvbAPIInterface*>(found);
        velmora::dvbservice::BrowserDVBService::getInstance();
        recording::reset();
    }

    velmora::dtv::DvbAPIInterface* api = nullptr;
};
