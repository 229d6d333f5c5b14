// Tells of changes of inputs.
#include "input_watch.h"

#include "bit_rate.h"
#include "service_log.h"

namespace dtvservice {

void InputWatch::start() {
    loop.postAt(EventLoop::Clock::now() + std::chrono::seconds(1), [this] {
        look(EventLoop::Clock::now());
        start();
    });
}

void InputWatch::look(EventLoop::Clock::time_point now) {
    std::size_t number = 0;
    for (Multiplex& multiplex : multiplexes) {
        lookAt(multiplex, ++number, now);
    }
}

void InputWatch::lookAt(Multiplex& multiplex, std::size_t number, EventLoop::Clock::time_point now) {
    if (watched.size() < number) {
        watched.resize(number);
    }
    multiplex.demux.measureRates(now);
    multiplex.report.look(multiplex.demux, now);
    const std::string name = "input " + std::to_string(number);
    tellState(watched[number - 1], multiplex, name, now);
    tellErrors(watched[number - 1], multiplex, name, now);
}

/// A failure and the end are logged by the input itself.
void InputWatch::tellState(Watched& before, const Multiplex& multiplex, const std::string& name,
                           EventLoop::Clock::time_point now) {
    using State = InputReport::State;
    const InputReport& report = multiplex.report;
    // The first measurement is of less than a second.
    const bool isMeasured = before.state == State::playing && report.state() == State::playing;
    if (!before.isKnown && isMeasured && !multiplex.si.channels().empty()) {
        before.isKnown = true;
        const std::size_t services = multiplex.si.channels().size();
        say(name + ": " + shownBitRate(multiplex.demux.total().bitRate) + ", " + std::to_string(services) +
            (services == 1 ? " service" : " services"));
    }
    if (report.state() == before.state) {
        return;
    }
    before.state = report.state();
    if (report.state() == State::silent || report.state() == State::noPackets || report.state() == State::noPat) {
        if (const auto line = before.messages.tell(report.stateName(), report.reason(), 1, now)) {
            BLOG_TAGGED(blog::kUnsupported, "%s, %s: %s\n", name.c_str(), report.source().c_str(), line->c_str());
        }
    } else if (report.state() == State::playing) {
        if (const auto line = before.messages.tell(report.stateName(), report.reason(), 1, now)) {
            BLOG_TAGGED(blog::kOrdinary, "%s, %s: %s\n", name.c_str(), report.source().c_str(), line->c_str());
        }
    }
}

void InputWatch::tellErrors(Watched& before, const Multiplex& multiplex, const std::string& name,
                            EventLoop::Clock::time_point now) {
    const auto tell = [&](const char* what, std::uint64_t& told, std::uint64_t count) {
        if (count <= told) {
            return;
        }
        const std::string text = std::string(what) + ": " + std::to_string(count) + " so far";
        if (const auto line = before.messages.tell(what, text, count - told, now)) {
            BLOG_TAGGED_AS(blog::kUnsupported, "tellErrors", "%s: %s\n", name.c_str(), line->c_str());
        }
        told = count;
    };
    const broadcast::PidCounts total = multiplex.demux.total();
    tell("continuity errors", before.continuityErrors, total.continuityErrors);
    tell("CRC errors", before.crcErrors, total.crcErrors);
}

}  // namespace dtvservice
