// RawQuestions: asks a process on a raw socket, and again after each answer.
// Threads: one.
// Blocks:  ask() until all answers are there.
#pragma once

#include <vector>

#include "cpus.h"
#include "latencies.h"
#include "peer.h"
#include "plain_packets.h"

namespace bench {

/// What all peers on a socket pair need.
struct OnSocket {
    OnSocket(const char* kind, int type, int cpu, std::size_t bytes)
        : sockets(type), peer("echo", {kind, std::to_string(cpu), std::to_string(bytes)}, sockets.peers) {
        pinTo(kOwnCpu);
    }
    SocketPair sockets;
    const Peer peer;
};

class RawQuestions : OnSocket {
public:
    /// Each question has so many answers.
    RawQuestions(int cpu, std::size_t bytes, unsigned char newAnswers = 1)
        : OnSocket("raw", SOCK_SEQPACKET, cpu, bytes), answers(newAnswers) {
        ask(1);
    }
    RawQuestions(const RawQuestions&) = delete;
    RawQuestions& operator=(const RawQuestions&) = delete;
    ~RawQuestions() { close(sockets.own); }

    void ask(std::int64_t questions) {
        question.front() = static_cast<char>(answers);
        times.begin();
        for (; questions > 0; --questions) {
            send(sockets.own, question.data(), question.size(), MSG_NOSIGNAL);
            for (unsigned int left = answers; left > 0; --left) {
                recv(sockets.own, answer.data(), answer.size(), 0);
            }
            times.next();
        }
    }
    /// Commands without answers, and a question behind them.
    void tell(std::int64_t commands) {
        question.front() = 0;
        for (; commands > 1; --commands) {
            send(sockets.own, question.data(), question.size(), MSG_NOSIGNAL);
        }
        ask(1);
    }

    Latencies times;

private:
    const unsigned char answers;
    std::vector<char> question = std::vector<char>(kShort);
    std::vector<char> answer = std::vector<char>(kLargest);
};

}  // namespace bench
