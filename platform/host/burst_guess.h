// BurstGuess: whether more packets wait behind the one that was read. To look costs a system call, so a receiver whose
// packets come alone looks ever more rarely, and one that has found some looks each time.
// Threads: one.
// Blocks:  never.
#pragma once

#include <algorithm>

namespace host {

class BurstGuess {
public:
    /// Packets that come alone between two looks, at most.
    static constexpr unsigned int kRarest = 64;

    /// Whether to look behind this packet.
    bool looks() { return left == 0 || --left == 0; }
    void found() {
        pause = 1;
        left = 0;
    }
    void foundNone() {
        left = pause;
        pause = std::min(2 * pause, kRarest);
    }

private:
    unsigned int pause = 1;  // packets until the next look, if this one finds none
    unsigned int left = 0;
};

}  // namespace host
