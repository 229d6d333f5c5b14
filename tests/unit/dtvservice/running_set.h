// ARunningSet: the core with all rooms, without a process. It plays a generated broadcast and records each browser's
// events.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <utility>

#include "logged.h"
#include "recording_client.h"
#include "rooms.h"
#include "scheduler.h"

/// Records each browser's events as text.
class HeardByBrowsers : public lo::browserdvbservice::ClientInterface {
public:
    using Texts = std::vector<std::string>;

    /// The browser's events since the previous call.
    Texts take(dtvservice::Browser browser) { return std::exchange(heard[browser], {}); }

#define EVENT(identifier, operation, Message, decoder, fields)                                          \
    int operation(frame::MsgIds& ids, const frame::TransportInfo& FIELDS_PARAMETERS(fields)) override { \
        heard[ids.peer].push_back(shownCall(#operation FIELDS_ARGUMENTS(fields)));                      \
        return 0;                                                                                       \
    }
#include "browserdvbservice_messages.inc"

private:
    static std::string shownValue(const _ovxDeserVectorU8_struct& bytes) {
        return shownBytes(bytes.data, bytes.count);
    }

    std::map<dtvservice::Browser, Texts> heard;
};

class ARunningSet : public testing::Test {
protected:
    using Texts = HeardByBrowsers::Texts;

    explicit ARunningSet(const std::optional<si::Ait::Application>& application = std::nullopt) {
        recording::reset();
        if (application) {
            core.application.emplace(*application);
        }
        dtvservice::addRooms(core, {});
        core.browsers.connect(heard);
        demux = &core.addMultiplex().demux;
    }

    /// Plays two seconds of a broadcast. `change` may modify each packet before it is played.
    void play(const tsmake::Multiplex& multiplex, const std::function<void(std::uint8_t* packet)>& change = {}) {
        tsmake::writeMultiplex(multiplex, 2, [&](const std::uint8_t* packet) {
            std::uint8_t bytes[broadcast::kPacketSize];
            std::copy_n(packet, broadcast::kPacketSize, bytes);
            if (change) {
                change(bytes);
            }
            demux->feed(broadcast::TsPacket{bytes});
        });
        demux->discontinuity();
    }
    void join(dtvservice::Browser browser) {
        frame::TransportInfo peer;
        peer.peer = browser;
        core.commands.browserConnected(peer);
        loop.runUntil(dtvservice::EventLoop::Clock::now());
    }
    template <typename Command, typename... Values>
    void sends(dtvservice::Browser browser, Command command, const Values&... values) {
        frame::MsgIds ids;
        ids.peer = browser;
        (core.commands.*command)(ids, frame::TransportInfo(), values...);
        loop.runUntil(dtvservice::EventLoop::Clock::now());
    }
    void tune(dtvservice::Browser browser, unsigned int sid) {
        lo::browserdvbservice::TuneInfoChannel channel;
        channel.idType = 12;
        channel.onid = 1;
        channel.tsid = 1025;
        channel.sid = sid;
        sends(browser, &dtvservice::Commands::cmdTuneToService, channel);
    }
    static auto hears(const std::string& operation) { return testing::Contains(testing::StartsWith(operation + "(")); }

    const tsmake::Multiplex sample = tsmake::sampleMultiplex();
    dtvservice::EventLoop loop;
    HeardByBrowsers heard;
    dtvservice::Core core{loop};
    broadcast::Demux* demux = nullptr;
};
