// HeldMessages: which thread holds the messages that it sends, and the connections that have some of them.
// Threads: isMine(), begin() from any; the rest on the thread that holds.
// Blocks:  never.
#pragma once

#include <atomic>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

namespace host {

class Connection;
class IOService;

class HeldMessages {
public:
    /// Those of this process. Never destroyed.
    static HeldMessages& instance();

    /// Whether the calling thread holds what it sends.
    bool isMine() const { return holder.load(std::memory_order_relaxed) == std::this_thread::get_id(); }
    /// False while a thread holds.
    bool begin();
    /// The connection has held messages of the service's.
    void add(const std::shared_ptr<IOService>& service, const std::shared_ptr<Connection>& connection);
    /// Sends all that is held.
    void end();

private:
    std::atomic<std::thread::id> holder{std::thread::id()};
    std::vector<std::pair<std::shared_ptr<IOService>, std::shared_ptr<Connection>>> connections;  // the holder's
};

}  // namespace host
