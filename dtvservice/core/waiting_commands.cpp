// Queues commands by browser.
#include "waiting_commands.h"

#include <utility>

namespace dtvservice {

bool WaitingCommands::add(Browser browser, EventLoop::Task task, std::size_t bytes) {
    return add(browser, {std::move(task), bytes}, true);
}

void WaitingCommands::addNotice(Browser browser, EventLoop::Task task) {
    add(browser, {std::move(task), 0}, false);
}

bool WaitingCommands::add(Browser browser, Waiting added, bool isLimited) {
    bool hasTurn = false;
    {
        const locks::Lock lock(mutex);
        const auto known = queues.find(browser);
        hasTurn = known != queues.end();
        if (isLimited && hasTurn &&
            (known->second.tasks.size() >= kMostCommands || known->second.bytes + added.bytes > kMostBytes)) {
            return false;
        }
        Queue& queue = hasTurn ? known->second : queues[browser];
        queue.bytes += added.bytes;
        queue.tasks.push_back(std::move(added));
    }
    if (!hasTurn) {
        postTurn(browser);
    }
    return true;
}

void WaitingCommands::postTurn(Browser browser) {
    loop.post([this, browser] { runOne(browser); });
}

/// The browser's next turn comes after the turns of the others.
void WaitingCommands::runOne(Browser browser) {
    Waiting next;
    {
        const locks::Lock lock(mutex);
        Queue& queue = queues[browser];
        next = std::move(queue.tasks.front());
        queue.tasks.pop_front();
        queue.bytes -= next.bytes;
    }
    next.task();
    bool hasMore = false;
    {
        const locks::Lock lock(mutex);
        const auto queue = queues.find(browser);
        hasMore = !queue->second.tasks.empty();
        if (!hasMore) {
            queues.erase(queue);
        }
    }
    if (hasMore) {
        postTurn(browser);
    }
}

}  // namespace dtvservice
