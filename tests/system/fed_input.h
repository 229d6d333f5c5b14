// A service whose input the test feeds, datagram by datagram, so that results do not depend on the speed of either.
#pragma once

#include "datagrams.h"
#include "raw_browser.h"

class AnInputThatComesByItself : public ARawBrowser {
protected:
    /// Sends datagrams in order until the service is presented.
    template <typename Send>
    bool arrives(Send send) {
        const lo::browserdvbservice::TuneInfoChannel channel = channelOf(kSample.services[1]);
        const std::string pmt = shownValue(asText(tsmake::pmtSection(kSample.services[1])));
        std::size_t index = 0;
        return eventually([&] {
            for (int count = 0; count < 20; ++count) {
                send(datagrams[index % datagrams.size()], index);
                ++index;
            }
            frame::MsgIds ids;
            service->cmdTuneToService(ids, frame::TransportInfo(), channel);
            return heard("onPmtDataChange(1, 1025, 28107, 0, " + pmt + ")");
        });
    }

    /// Repeats a broadcast until the condition holds.
    template <typename Condition>
    bool playsUntil(std::uint16_t port, const std::vector<std::string>& broadcast, Condition condition) {
        std::size_t index = 0;
        return eventually([&] {
            sender.send(broadcast[index++ % broadcast.size()], addressOf("127.0.0.1", port));
            return condition();
        });
    }

    const std::vector<std::string> datagrams = datagramsOf(fileText(SAMPLE_FILE));
    const Socket sender;
};
