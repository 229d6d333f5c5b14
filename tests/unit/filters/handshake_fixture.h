// Opens and closes filters with confirmations and a clock that the test controls.
#pragma once

#include <atomic>

#include "filter_fixture.h"

constexpr const char* kFile = "browser_dvb_service_handshake.cpp";

/// The time that the test sets.
inline std::atomic<double> testSeconds{0};
inline std::atomic<int> readings{0};
inline double readTestSeconds() {
    ++readings;
    return testSeconds;
}
/// Advances eleven seconds at each reading, so that a wait gives up at its first check.
inline double hurryingSeconds() {
    static std::atomic<int> looks{0};
    return 11.0 * ++looks;
}

class AHandshake : public AFilter {
protected:
    int open(const std::string& session, unsigned int pid = 100) {
        return service->startSection(&client, session, pid, match, bits, 3);
    }
    static void confirmOpen(unsigned int pid, const std::string& session, int result) {
        injectEvent<messages::OnBrowserOpenFilterConf>(pid, session, static_cast<short>(result));
    }
    static void confirmClose(const std::string& session, int result) {
        injectEvent<messages::OnBrowserOCloseFilterConf>(session, static_cast<short>(result));
    }
};
