// Questions: asks a service of its own through the library, and again from inside each answer.
// Threads: one asks; the answers come on the transport thread.
// Blocks:  the constructor until the service takes commands; ask() until all answers are there.
#pragma once

#include <dvb_helpers/empty_listener.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "browser.h"
#include "countdown.h"
#include "peer.h"

namespace bench {

class Questions {
public:
    /// Answers have a text of `bytes`, or none if 0. `whenAnswered` runs at each answer.
    Questions(
        int cpuOfService, std::size_t bytes, std::function<void()> whenAnswered = [] {})
        : service("answering_service", {std::to_string(cpuOfService), std::to_string(bytes)}),
          listener(std::make_shared<Listener>(std::move(whenAnswered))) {
        dvbApi().addListener(listener);
        waitForService();
    }
    Questions(const Questions&) = delete;
    Questions& operator=(const Questions&) = delete;
    ~Questions() { dvbApi().removeListener(listener); }

    void ask(std::int64_t questions) {
        listener->left = questions;
        dvbApi().sendPtsRequest(0);
        listener->allAnswered.wait();
    }

private:
    class Listener final : public velmora::dtv::helpers::EmptyListener {
    public:
        explicit Listener(std::function<void()> newWhenAnswered) : whenAnswered(std::move(newWhenAnswered)) {}
        void onPtsNotify(std::uint64_t, std::uint64_t) override { next(); }
        void onDrmResultReply(std::uint64_t, std::uint8_t, const std::string&, std::uint16_t) override { next(); }

        std::int64_t left = 0;
        Countdown allAnswered;

    private:
        void next() {
            whenAnswered();
            if (--left == 0) {
                allAnswered.end();
            } else {
                dvbApi().sendPtsRequest(0);
            }
        }

        const std::function<void()> whenAnswered;
    };

    const Peer service;
    const std::shared_ptr<Listener> listener;
};

}  // namespace bench
