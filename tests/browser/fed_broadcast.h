// A broadcast that changes when the test wants it to: each of its two states is sent to the service again and again.
// Threads: the test's, and one that sends.
#pragma once

#include <atomic>
#include <chrono>
#include <thread>

#include "datagrams.h"
#include "service_process.h"

namespace browser_tests {

class FedBroadcast {
public:
    /// Seconds of a description's broadcast: where its second state begins, and where that ends.
    static constexpr tsmake::Second kSecondState = 3;
    static constexpr tsmake::Second kEnd = 2 * kSecondState;

    /// The first state does not have the packets of some PIDs.
    explicit FedBroadcast(const tsmake::Multiplex& multiplex, std::set<unsigned int> newMissing = {})
        : broadcast(fileText(writeBroadcast(multiplex, kEnd, "fed.ts"))),
          missing(std::move(newMissing)),
          thread([this] { send(); }) {}
    FedBroadcast(const FedBroadcast&) = delete;
    FedBroadcast& operator=(const FedBroadcast&) = delete;
    ~FedBroadcast() {
        ends = true;
        thread.join();
    }

    /// The service's --input.
    std::string input() const { return "udp://127.0.0.1:" + std::to_string(port); }
    void change() { isChanged = true; }

private:
    void send() const {
        constexpr std::chrono::milliseconds kPace{3};  // a little faster than the broadcast is
        std::vector<std::string> states[] = {partOf(broadcast, 0, kSecondState),
                                             partOf(broadcast, kSecondState, kSecondState)};
        for (std::string& datagram : states[0]) {
            datagram = withoutPids(datagram, missing);
        }
        const Socket sender;
        for (std::size_t index = 0; !ends; ++index) {
            const std::vector<std::string>& state = states[isChanged ? 1 : 0];
            sender.send(state[index % state.size()], addressOf("127.0.0.1", port));
            std::this_thread::sleep_for(kPace);
        }
    }

    const std::uint16_t port = freePort();
    const std::string broadcast;
    const std::set<unsigned int> missing;
    std::atomic<bool> isChanged{false};
    std::atomic<bool> ends{false};
    std::thread thread;
};

}  // namespace browser_tests
