// Posts packets from a source to the loop.
#include "live_input.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

#include "descriptor_wait.h"
#include "live_source.h"
#include "pacer.h"
#include "service_log.h"

namespace dtvservice {

namespace {

constexpr std::size_t kBatch = 64 * broadcast::kPacketSize;
constexpr std::chrono::seconds kPause{1};

}  // namespace

LiveInput::LiveInput(InputName newInput, EventLoop& newLoop, broadcast::Demux& newDemux, InputReport& newReport,
                     std::uint64_t newBitRate)
    : input(std::move(newInput)),
      loop(newLoop),
      demux(newDemux),
      report(newReport),
      bitRate(newBitRate),
      wakeUp(eventfd(0, EFD_CLOEXEC)) {
    if (wakeUp < 0) {
        const std::string problem = input.text + ": no descriptor to end it by: " + std::strerror(errno);
        report.failed(problem);
        BLOG_TAGGED(blog::kFailure, "%s\n", problem.c_str());
        return;
    }
    open();
    try {
        thread = std::thread([this] { run(); });
    } catch (const std::system_error& error) {
        const std::string problem = input.text + ": no thread: " + error.what();
        loop.post([&report = report, problem] { report.failed(problem); });  // behind what open() has posted
        source.reset();
        BLOG_TAGGED(blog::kFailure, "%s\n", problem.c_str());
        close(wakeUp);
    }
}

LiveInput::~LiveInput() {
    if (!thread.joinable()) {
        return;
    }
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(wakeUp, &one, sizeof one);
    thread.join();
    close(wakeUp);
}

/// False if the input must end.
bool LiveInput::waitUntil(EventLoop::Clock::time_point time) const {
    constexpr int kNothing = -1;
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(time - EventLoop::Clock::now());
    return waitFor(kNothing, wakeUp, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
}

void LiveInput::open() {
    std::string problem;
    source = openLive(input, wakeUp, report.counts, problem);
    if (source) {
        loop.post([&report = report] { report.opened(EventLoop::Clock::now()); });
    } else {
        tell(problem);
    }
}

void LiveInput::tell(const std::string& problem) {
    loop.post([&report = report, problem] { report.failed(problem); });
    if (const auto line = messages.tell(problem + "; trying again every second")) {
        BLOG_TAGGED(blog::kFailure, "%s\n", line->c_str());
    }
}

void LiveInput::run() {
    while (!source || playToItsEnd()) {
        if (!waitUntil(EventLoop::Clock::now() + kPause)) {
            return;
        }
        open();
    }
}

/// False if the source needs no opening again.
bool LiveInput::playToItsEnd() {
    PacketReader reader(std::move(source));
    reader.countIn(report.counts);
    playFrom(reader);
    loop.post([&demux = demux] { demux.discontinuity(); });
    const bool hasEnded = reader.error().empty() && input.kind == InputName::Kind::standardInput;
    if (hasEnded && waitUntil(EventLoop::Clock::now())) {
        BLOG_TAGGED(blog::kUnsupported, "standard input has ended\n");
        loop.post([&report = report] { report.ended(); });
        return false;
    }
    if (!reader.error().empty()) {
        tell(reader.error());
    }
    return true;
}

void LiveInput::playFrom(PacketReader& reader) {
    const bool paced = input.kind == InputName::Kind::standardInput;
    Pacer pacer(bitRate);
    std::vector<std::uint8_t> batch;
    while (const std::uint8_t* const packet = reader.next()) {
        const auto now = EventLoop::Clock::now();
        if (paced) {
            const auto due = pacer.due(broadcast::TsPacket{packet}, now);
            // Waits are whole milliseconds, so packets that are due within one go together.
            if (due - now >= std::chrono::milliseconds(1)) {
                handOver(batch);
                if (!waitUntil(due)) {
                    return;
                }
            }
        }
        batch.insert(batch.end(), packet, packet + broadcast::kPacketSize);
        if (batch.size() >= kBatch || !reader.hasBuffered()) {
            handOver(batch);
        }
    }
    handOver(batch);
}

/// If the loop does not keep up, drops and counts the packets.
void LiveInput::handOver(std::vector<std::uint8_t>& batch) {
    if (batch.empty()) {
        return;
    }
    const std::size_t count = batch.size() / broadcast::kPacketSize;
    if (underWay->load() + count > kMostUnderWay) {
        const std::uint64_t dropped = report.counts.droppedPackets += count;
        const std::string text = std::to_string(dropped) + " packets came faster than they were taken, so far";
        if (const auto line = messages.tell("dropped", text, count)) {
            BLOG_TAGGED(blog::kUnsupported, "%s: %s\n", input.text.c_str(), line->c_str());
        }
        batch.clear();
        return;
    }
    *underWay += count;
    loop.post([&demux = demux, underWay = underWay, packets = std::move(batch), count] {
        const auto now = broadcast::Clock::now();  // they came together
        for (std::size_t at = 0; at < packets.size(); at += broadcast::kPacketSize) {
            demux.feed(broadcast::TsPacket{packets.data() + at}, now);
        }
        *underWay -= count;
    });
    batch = {};
}

}  // namespace dtvservice
