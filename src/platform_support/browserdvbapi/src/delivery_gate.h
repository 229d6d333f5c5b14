// DeliveryGate: what the delivery thread and its service object share about the object's end. Nobody ends the thread,
// so at process exit it may be waiting for a section, or be in the middle of one, when the object goes. Threads: any.
// Blocks: close() while a section is being delivered, up to its time. Locks:   mutex, a leaf, never held across a call
// out.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace velmora::dvbservice {

class DeliveryGate {
public:
    /// One pass of the delivery thread through the object; false when the object is going or gone.
    class Pass {
    public:
        explicit Pass(DeliveryGate& newGate) : gate(newGate), entered(gate.enter()) {}
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;
        ~Pass() {
            if (entered) {
                gate.leave();
            }
        }
        explicit operator bool() const { return entered; }

    private:
        DeliveryGate& gate;
        bool entered;
    };

    /// Lets nobody in from now on. True once nobody is inside; a thread that is inside itself, because a client ends
    /// the process from its call, does not wait for itself.
    bool close(std::chrono::milliseconds longest) {
        std::unique_lock<std::mutex> lock(mutex);
        closed = true;
        return left.wait_for(lock, longest, [this] { return !inside || who == std::this_thread::get_id(); });
    }

private:
    bool enter() {
        const std::lock_guard<std::mutex> lock(mutex);
        inside = !closed;
        who = std::this_thread::get_id();
        return inside;
    }
    void leave() {
        {
            const std::lock_guard<std::mutex> lock(mutex);
            inside = false;
        }
        left.notify_all();
    }

    std::mutex mutex;  // guards the rest
    std::condition_variable left;
    bool closed = false;
    bool inside = false;
    std::thread::id who;
};

}  // namespace velmora::dvbservice
