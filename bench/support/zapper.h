// Zapper: tunes to two services in turn, to the next when all has been told of the one before: the channel, its PMT,
// its EIT (present and following) and its AIT.
// Threads: one zaps; the events come on the transport thread, which tunes from the second time on.
// Blocks:  zap() until the last tune's events are there.
#pragma once

#include <dvb_helpers/empty_listener.h>

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>

#include "browser.h"
#include "countdown.h"

namespace bench {

class Zapper final : public velmora::dtv::helpers::EmptyListener {
public:
    /// `newWhenTold` runs when all has been told of a service.
    explicit Zapper(std::function<void()> newWhenTold = [] {}) : whenTold(std::move(newWhenTold)) {}

    void zap(std::int64_t tunes) {
        left = tunes;
        tune();
        allDone.wait();
    }

private:
    void OnChannelChanged(bool started, std::uint16_t, std::uint16_t, std::uint16_t sid) override {
        told(kChannel, started && sid == wanted());
    }
    void onPMTSectionUpdated(std::uint16_t, std::uint16_t, std::uint16_t sid, int, std::string) override {
        told(kPmt, sid == wanted());
    }
    void onEITSectionUpdated(int, std::string section) override {
        constexpr std::size_t kNumber = 6;
        const auto byteAt = [&](std::size_t at) { return static_cast<std::uint8_t>(section[at]); };
        told(byteAt(kNumber) == 0 ? kPresent : kFollowing, (byteAt(3) << 8 | byteAt(4)) == wanted());
    }
    void onAITSectionUpdated(std::uint16_t, std::uint16_t, std::uint16_t sid, const std::string&) override {
        told(kAit, sid == wanted());
    }

    enum Part : unsigned int { kChannel = 1, kPmt = 2, kPresent = 4, kFollowing = 8, kAit = 16, kAll = 31 };

    std::uint16_t wanted() const { return kServices[service]; }
    void tune() {
        service = 1 - service;
        parts = 0;
        dvbApi().tuneToService(10, 1, 1025, wanted(), 0);
    }
    void told(Part part, bool isWanted) {
        if (!isWanted || parts == kAll) {
            return;
        }
        parts |= part;
        if (parts == kAll) {
            whenTold();
            if (--left == 0) {
                allDone.end();
            } else {
                tune();
            }
        }
    }

    /// Services of tsmake's sample with all tables.
    static constexpr std::array<std::uint16_t, 2> kServices = {28106, 28107};

    const std::function<void()> whenTold;
    std::size_t service = 0;
    unsigned int parts = kAll;
    std::int64_t left = 0;
    Countdown allDone;
};

}  // namespace bench
