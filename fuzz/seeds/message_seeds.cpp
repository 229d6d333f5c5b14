// Messages as they travel: each one of the catalogue with empty values, and those of a running service and its browser.
#include <array>
#include <type_traits>

#include "app-browserdvbservice-proxy-main.h"
#include "bus/pcapng.h"
#include "envelope.h"
#include "message_transfer.h"
#include "running_service.h"
#include "seeds.h"
#include "several_messages.h"

namespace fuzz {

namespace {

struct Sent {
    frame::MsgMeta header;
    std::vector<std::uint8_t> image;
};
using Messages = std::vector<Sent>;

/// The member that receives a message registers its handlers in the order of the catalogue.
unsigned int placeOf(const frame::MsgMeta& header) {
    static const std::vector<std::uint32_t> kCommands = {
#define COMMAND(identifier, operation, Message, fields) identifier,
#include "browserdvbservice_messages.inc"
    };
    static const std::vector<std::uint32_t> kEvents = {
#define EVENT(identifier, operation, Message, decoder, fields) identifier,
#include "browserdvbservice_messages.inc"
    };
    const std::vector<std::uint32_t>& all =
        header.direction == lo::browserdvbservice::kEventDirection ? kEvents : kCommands;
    return static_cast<unsigned int>(std::find(all.begin(), all.end(), header.messageId) - all.begin());
}

/// All that is sent while this exists.
class Collected {
public:
    Collected() {
        wire::setSpy([this](const frame::MsgMeta& header, const std::vector<std::uint8_t>& image) {
            messages.push_back({header, image});
        });
    }
    Collected(const Collected&) = delete;
    Collected& operator=(const Collected&) = delete;
    ~Collected() { wire::setSpy({}); }

    Messages messages;
};

template <typename Interface, typename... Parameters>
void callWithEmptyValues(Interface& target,
                         int (Interface::*operation)(frame::MsgIds&, const frame::TransportInfo&, Parameters...)) {
    frame::MsgIds ids;
    (target.*operation)(ids, {}, std::decay_t<Parameters>()...);
}

class NoHandler : public lo::browserdvbservice::CommandHandler {
#define COMMAND(identifier, operation, Message, fields)                                                  \
    int operation(frame::MsgIds&, const frame::TransportInfo& FIELDS_PARAMETER_TYPES(fields)) override { \
        return 0;                                                                                        \
    }
#include "browserdvbservice_messages.inc"
    void browserConnected(const frame::TransportInfo&) override {}
    void browserDisconnected(const frame::TransportInfo&) override {}
};

/// Each event, empty, then what a service sends to a browser that joins and asks.
Messages events() {
    const Collected collected;
    NoHandler nobody;
    lo::browserdvbservice::ServiceStub stub(nobody);
    stub.setLmqIOModule(wire::newService());
    using lo::browserdvbservice::ClientInterface;
#define EVENT(identifier, operation, Message, decoder, fields) \
    callWithEmptyValues<ClientInterface>(stub, &ClientInterface::operation);
#include "browserdvbservice_messages.inc"
    RunningService service;
    service.join(1);
    service.playSample(samplePackets().size());
    return collected.messages;
}

void sendUsefulCommands(lo::browserdvbservice::Proxy& proxy) {
    frame::MsgIds ids;
    lo::browserdvbservice::TuneInfoChannel channel;
    channel.idType = 12;
    channel.onid = 1;
    channel.tsid = 1025;
    channel.sid = 28106;
    lo::browserdvbservice::OpenFilterMatchMask_t mask;
    mask.mask = {0x4E, 0x6D};
    mask.maskBits = {0xFF, 0xFF};
    proxy.cmdTuneToService(ids, {}, channel);
    channel.idType = 13;
    channel.dsd = "delivery system";
    proxy.cmdTuneToService(ids, {}, channel);
    proxy.cmdFilterOpen(ids, {}, "session", 0x12, mask);
    proxy.cmdStartPMTRequest(ids, {}, "session 2", 28106);
    proxy.cmdAddStreamEventListener(ids, {}, 1, 1, 1025, 28106, -1, "", "1");
    proxy.cmdAddStreamEventListener(ids, {}, 2, 1, 1025, 28106, 8, "events/show", "name");
    proxy.cmdRemoveStreamEventListener(ids, {}, 1, 1, 1025, 28106, -1, "", "1");
    proxy.cmdStartTemiTimelineRequest(ids, {}, 1, 1, 0);
    proxy.cmdSendPtsRequest(ids, {}, 1);
    proxy.cmdStartOSDDetection(ids, {}, 3);
    proxy.cmdSendDrmMessage(ids, {}, 77, 1, 0, "type", "message");
    proxy.cmdSetAudioSource(ids, {}, 1, "broadcast");
    proxy.cmdFilterClose(ids, {}, "session");
}

/// Each command, empty, then useful ones.
Messages commands() {
    const Collected collected;
    lo::browserdvbservice::Proxy proxy;
    proxy.setLmqIOModule(wire::newService());
    using lo::browserdvbservice::ServiceInterface;
#define COMMAND(identifier, operation, Message, fields) \
    callWithEmptyValues<ServiceInterface>(proxy, &ServiceInterface::operation);
#include "browserdvbservice_messages.inc"
    sendUsefulCommands(proxy);
    return collected.messages;
}

/// At most a few of each message.
Messages fewOf(const Messages& messages) {
    std::map<std::uint32_t, unsigned int> counts;
    Messages few;
    for (const Sent& each : messages) {
        constexpr unsigned int kMost = 4;
        if (++counts[each.header.messageId] <= kMost) {
            few.push_back(each);
        }
    }
    return few;
}

void writeRecords(SeedFiles& files, const char* fuzzer, const Messages& messages) {
    Seed all;
    for (const Sent& each : fewOf(messages)) {
        files.add(fuzzer, Seed().u8(placeOf(each.header)).chunk(each.image));
        all.u8(placeOf(each.header)).chunk(each.image);
    }
    files.add(fuzzer, all);
}

Seed packetOf(const Sent& message) {
    Seed packet;
    std::array<std::uint8_t, host::kEnvelopeSize> envelope{};
    host::packEnvelope({message.header, 0, static_cast<std::uint32_t>(message.image.size())}, envelope.data());
    packet.raw(envelope);
    packet.raw(message.image);
    return packet;
}

void writePackets(SeedFiles& files, const Messages& messages) {
    constexpr unsigned int kWithRing = 1;
    Seed all;
    all.u8(0).chunk(host::kQueueAnnounced);
    all.u8(kWithRing).chunk(std::string(host::kQueueMark) + "queue");
    files.add("host_framing", all);
    for (const Sent& each : fewOf(messages)) {
        all.u8(0).chunk(packetOf(each).bytes);
    }
    files.add("host_framing", all);
}

/// A packet of as many messages as it takes, behind the mark, and one of the first three.
void writePacketsOfSeveral(SeedFiles& files, const Messages& messages) {
    for (const std::size_t most : {std::size_t{3}, messages.size()}) {
        host::SeveralMessages several(host::SeveralMessages::kMostBytes);
        for (std::size_t index = 0; index < most; ++index) {
            const std::string packet = packetOf(messages[index]).bytes;
            several.add(reinterpret_cast<const std::uint8_t*>(packet.data()), packet.size());
        }
        const host::SeveralMessages::Packet packet = several.packet();
        const std::string_view bytes(reinterpret_cast<const char*>(packet.bytes), packet.length);
        files.add("several_messages", Seed().raw(bytes.substr(host::kSeveralMark.size())));
    }
}

/// A recording, for the fuzzer that reads it in two parts and for the one that replays it.
void addRecording(SeedFiles& files, const std::string& records) {
    const std::string all = bus::pcapngStart() + records;
    constexpr std::size_t kFirstPart = 100;
    files.add("bus_records", Seed().u16(kFirstPart).raw(all));
    files.add("replays", Seed().raw(all));
}

/// Recordings: a record of each message, all in one, and one of each kind.
void writeRecordings(SeedFiles& files, const Messages& messages) {
    constexpr std::uint64_t kMillisecond = 1000000;
    std::uint64_t count = 0;
    std::string all;
    for (const Sent& each : fewOf(messages)) {
        bus::Record record;
        record.direction = static_cast<bus::Direction>(each.header.direction);
        record.message = each.header.messageId;
        record.time = (++count) * kMillisecond;
        record.browser = 1;
        record.program = "program";
        record.bytes.assign(each.image.begin(), each.image.end());
        const std::string block = bus::pcapngBlock(record);
        addRecording(files, block);
        all += block;
    }
    for (unsigned int kind = 0; kind <= static_cast<unsigned int>(bus::kLastKind); ++kind) {
        bus::Record record;
        record.kind = static_cast<bus::Kind>(kind);
        record.side = bus::Side::browser;
        record.text = "text";
        record.count = 1;
        all += bus::pcapngBlock(record);
    }
    addRecording(files, all);
}

/// The steps of presented_service: two browsers join, the sample plays, one of them sends all that it can.
void writeSteps(SeedFiles& files, const Messages& messages) {
    enum Step : unsigned int { kSample, kOwnBroadcast, kCommand, kJoin, kLeave, kOperator };
    constexpr unsigned int kPieces = 25;
    Seed begin;
    begin.u8(kJoin).u8(kSample).u8(kPieces);
    Seed all = begin;
    all.u8(kJoin + 6);
    for (const Sent& each : fewOf(messages)) {
        all.u8(kCommand).u8(placeOf(each.header)).chunk(each.image);
    }
    all.u8(kSample).u8(kPieces).u8(kOperator).chunk(std::string(R"({"command":"status"})")).u8(kLeave);
    files.add("presented_service", begin);
    files.add("presented_service", all);
}

}  // namespace

void writeMessageSeeds(SeedFiles& files) {
    const Messages fromBrowser = commands();
    const Messages fromService = events();
    writeRecords(files, "event_decoding", fromService);
    writeRecords(files, "command_decoding", fromBrowser);
    writePackets(files, fromBrowser);
    writePacketsOfSeveral(files, fewOf(fromService));
    writeSteps(files, fromBrowser);
    Messages both = fromBrowser;
    both.insert(both.end(), fromService.begin(), fromService.end());
    writeRecordings(files, both);
}

}  // namespace fuzz
