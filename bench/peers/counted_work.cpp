// Work within one process whose instructions are counted.
//   counted_work unwanted_lines|lines|lines_by_hand COUNT   log lines
//   counted_work assembly COUNT                             sections out of packets
//   counted_work raw_queue COUNT BYTES                      messages through a queue of Boost.Interprocess, both ends
#include <unistd.h>

#include <boost/interprocess/ipc/message_queue.hpp>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "browser.h"
#include "demux.h"
#include "line_by_hand.h"
#include "ovx/log.h"
#include "section_stream.h"

namespace {

constexpr const char* kBlogTag = "bench";

void writeLines(std::int64_t count) {
    for (int value = 0; value < count; ++value) {
        BLOG_TAGGED(blog::kFailure, "value %d\n", value);
    }
}

void writeUnwantedLines(std::int64_t count) {
    for (int value = 0; value < count; ++value) {
        BLOG_TAGGED(blog::kTrace, "value %d\n", value);
    }
}

void writeLinesByHand(std::int64_t count) {
    bench::LineByHand line;
    for (int value = 0; value < count; ++value) {
        line.write(value);
    }
}

/// About so many: the stream again and again.
void assemble(std::int64_t count) {
    std::int64_t sections = 0;
    broadcast::Demux demux;
    demux.subscribe(bench::kSectionPid, [&sections](si::Bytes) { ++sections; });
    const auto now = broadcast::Clock::now();
    while (sections < count) {
        for (const bench::Packet& packet : bench::sectionStream()) {
            demux.feed(broadcast::TsPacket{packet.data()}, now);
        }
    }
}

void throughRawQueue(std::int64_t count, std::size_t bytes) {
    using Queue = boost::interprocess::message_queue;
    const std::string name = "dtv-bench-" + std::to_string(getpid());
    Queue queue(boost::interprocess::create_only, name.c_str(), 128, 4500);
    Queue::remove(name.c_str());
    const std::vector<std::uint8_t> sent(bytes);
    std::vector<std::uint8_t> received(4500);
    for (; count > 0; --count) {
        Queue::size_type length = 0;
        unsigned int priority = 0;
        queue.try_send(sent.data(), sent.size(), 0);
        queue.receive(received.data(), received.size(), length, priority);
    }
}

/// Whether there is such work.
bool work(const std::string& what, std::int64_t count, std::size_t bytes) {
    if (what == "unwanted_lines") {
        writeUnwantedLines(count);
    } else if (what == "lines") {
        writeLines(count);
    } else if (what == "lines_by_hand") {
        writeLinesByHand(count);
    } else if (what == "assembly") {
        assemble(count);
    } else if (what == "raw_queue") {
        throughRawQueue(count, bytes);
    } else {
        return false;
    }
    return true;
}

}  // namespace

int main(int arguments, char** argument) {
    try {
        if (arguments > 2 &&
            work(argument[1], std::atoll(argument[2]), arguments > 3 ? std::strtoul(argument[3], nullptr, 10) : 0)) {
            return 0;
        }
        std::fprintf(stderr, "bench: counted_work knows no such work\n");
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench: counted_work: %s\n", error.what());
    }
    return 1;
}
