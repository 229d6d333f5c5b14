// InputWatch: looks at every input once a second: measures its rate, and logs when it stops or starts to give services,
// and its errors.
// Threads: the loop's.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <vector>

#include "event_loop.h"
#include "multiplexes.h"
#include "repeated_messages.h"

namespace dtvservice {

class InputWatch {
public:
    /// Gets a line about an input when its rate and its services are first known.
    using Say = std::function<void(const std::string& line)>;

    /// All must outlive the watch. The loop must run no task after the watch ends.
    InputWatch(EventLoop& newLoop, Multiplexes& newMultiplexes, Say newSay)
        : loop(newLoop), multiplexes(newMultiplexes), say(std::move(newSay)) {}

    /// Looks once a second from now on.
    void start();
    void look(EventLoop::Clock::time_point now);

private:
    struct Watched {
        InputReport::State state = InputReport::State::starting;
        bool isKnown = false;
        std::uint64_t continuityErrors = 0;
        std::uint64_t crcErrors = 0;
        RepeatedMessages messages;
    };

    void lookAt(Multiplex& multiplex, std::size_t number, EventLoop::Clock::time_point now);
    void tellState(Watched& before, const Multiplex& multiplex, const std::string& name,
                   EventLoop::Clock::time_point now);
    void tellErrors(Watched& before, const Multiplex& multiplex, const std::string& name,
                    EventLoop::Clock::time_point now);

    EventLoop& loop;
    Multiplexes& multiplexes;
    Say say;
    std::vector<Watched> watched;
};

}  // namespace dtvservice
