// The presented service's packets for readers.
#include "stream_room.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace dtvservice {

using broadcast::Channel;
using broadcast::Section;

StreamRoom::StreamRoom(Core& newCore)
    : core(newCore), stream([this](const std::uint8_t* packet, bool isPat) { deliver(packet, isPat); }) {
    core.requests.add("status", calls(*this, &StreamRoom::count));
}

StreamRoom::~StreamRoom() {
    rest();
}

void StreamRoom::join(std::shared_ptr<PacketQueue> reader) {
    readers.push_back({std::move(reader)});
    listen();
}

void StreamRoom::multiplexReceived(Multiplex& multiplex) {
    if (demux != &multiplex.demux) {
        rest();
        stream.clear();
        demux = &multiplex.demux;
        listen();
    }
}

/// The PAT may have moved the PMT to another PID.
void StreamRoom::channelListChanged(Multiplex& multiplex) {
    const Channel* const channel = core.presented();
    if (channel != nullptr && &multiplex == &core.received() && channel->pmtPid != pmtPid) {
        follow(*channel);
    }
}

void StreamRoom::servicePresented(const Channel& channel) {
    follow(channel);
}

void StreamRoom::serviceGone() {
    stream.clear();
}

void StreamRoom::pmtChanged(const Channel& channel, const Section&, bool) {
    setStreams(channel);
}

void StreamRoom::follow(const Channel& channel) {
    pmtPid = channel.pmtPid;
    stream.present(channel);
    setStreams(channel);
}

/// Nothing until a PMT has arrived.
void StreamRoom::setStreams(const Channel& channel) {
    if (const si::Pmt* const pmt = core.received().si.pmtFields(channel.serviceId)) {
        stream.setStreams(*pmt);
    }
}

/// Without readers, packets are not looked at.
void StreamRoom::listen() {
    if (demux != nullptr && !readers.empty()) {
        demux->tap([this](broadcast::TsPacket packet) { stream.feed(packet); });
    }
}

void StreamRoom::rest() {
    if (demux != nullptr) {
        demux->tap(nullptr);
    }
}

void StreamRoom::deliver(const std::uint8_t* packet, bool isPat) {
    readers.erase(
        std::remove_if(readers.begin(), readers.end(), [&](Reader& reader) { return !give(reader, packet, isPat); }),
        readers.end());
    if (readers.empty()) {
        // This is the tap, which cannot remove itself.
        core.loop.post([this] {
            if (readers.empty()) {
                rest();
            }
        });
    }
}

/// False if the reader has gone.
bool StreamRoom::give(Reader& reader, const std::uint8_t* packet, bool isPat) {
    reader.hasBegun = reader.hasBegun || isPat;
    if (!reader.hasBegun) {
        return true;
    }
    const PacketQueue::Put put = reader.queue->put(packet);
    if (put == PacketQueue::Put::dropped) {
        const std::string text = std::to_string(++dropped) + " packets dropped so far";
        if (const auto line = messages.tell("dropped", text, 1)) {
            BLOG_TAGGED(blog::kUnsupported, "a reader of the stream is too slow: %s\n", line->c_str());
        }
    }
    return put != PacketQueue::Put::ended;
}

nlohmann::json StreamRoom::count(const nlohmann::json&) {
    const auto reading =
        std::count_if(readers.begin(), readers.end(), [](const Reader& reader) { return !reader.queue->isEnded(); });
    return {{"stream_readers", reading}, {"stream_drops", dropped}};
}

}  // namespace dtvservice
