// Writes to a queue of Boost.Interprocess as fast as its reader takes.
//   queue_writer QUEUE CPU BYTES   runs on that CPU; each 4 bytes of its standard input order that many messages
#include <sched.h>
#include <unistd.h>

#include <boost/interprocess/ipc/message_queue.hpp>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <vector>

#include "cpus.h"

namespace {

void serve(const char* name, std::size_t bytes) {
    boost::interprocess::message_queue queue(boost::interprocess::open_only, name);
    const std::vector<std::uint8_t> message(bytes);
    std::uint32_t count = 0;
    while (read(STDIN_FILENO, &count, sizeof count) == sizeof count) {
        for (; count > 0; --count) {
            while (!queue.try_send(message.data(), message.size(), 0)) {
                sched_yield();
            }
        }
    }
}

}  // namespace

int main(int, char** arguments) {
    try {
        bench::pinTo(std::atoi(arguments[2]));
        serve(arguments[1], std::strtoul(arguments[3], nullptr, 10));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "queue_writer: %s\n", error.what());
        return 1;
    }
    return 0;
}
