// Turns: threads that do something one at a time, in the order in which they came. A mutex would let the thread that
// has just finished begin again before those that wait.
// Threads: any.
// Blocks:  take(), until the threads that came earlier have passed.
#pragma once

#include <atomic>
#include <cstdint>
#include <thread>

namespace host {

class Turns {
public:
    /// This thread's turn, for the lifetime of the object. None when there are no turns to take.
    class Turn {
    public:
        explicit Turn(Turns* newTurns) : turns(newTurns) {
            if (turns != nullptr) {
                turns->take();
            }
        }
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;
        ~Turn() {
            if (turns != nullptr) {
                turns->pass();
            }
        }

    private:
        Turns* const turns;
    };

    void take();
    void pass();
    /// Whether it is the calling thread's turn.
    bool isMine() const { return holder.load(std::memory_order_relaxed) == std::this_thread::get_id(); }
    /// How many threads have their turn or wait for it.
    std::uint32_t size() const { return tickets.load() - current.load(); }

private:
    std::atomic<std::uint32_t> tickets{0};  // given so far, modulo 2^32
    std::atomic<std::uint32_t> current{0};  // the ticket whose turn it is; a futex
    std::atomic<std::thread::id> holder{std::thread::id()};
};

}  // namespace host
