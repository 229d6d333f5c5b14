// Schedules packets.
#include "scheduler.h"

#include <algorithm>
#include <array>
#include <deque>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>

#include "carousel.h"
#include "inserted_stream.h"
#include "object_carousel.h"
#include "tables.h"

namespace tsmake {

namespace {

constexpr std::size_t kPacketSize = kTsPacketSize;
constexpr std::uint64_t kPacketBits = kPacketSize * 8;
constexpr std::uint64_t kTicks = 27000000;
constexpr std::uint64_t kMillisecond = kTicks / 1000;
/// The distance from the PCR to the PTS, which gives a decoder time to buffer.
constexpr std::uint64_t kPresentationDelay = 500 * kMillisecond;

using Packet = TsPacketBytes;
using Bytes = std::vector<std::uint8_t>;

/// Builds the packets of one PID and sets their continuity_counter.
class PidWriter {
public:
    explicit PidWriter(std::uint16_t newPid) : pid(newPid) {}

    /// A packet with as much of the payload as fits. Stuffing follows the given fields in the adaptation field. A
    /// packet without payload does not count.
    Packet next(const Bytes& payload, std::size_t& at, bool unitStart, const Bytes& fields) {
        Packet packet;
        packet.fill(0xFF);
        std::size_t adaptation = fields.empty() ? 0 : fields.size() + 1;
        const std::size_t room = kPacketSize - 4 - adaptation;
        const std::size_t count = std::min(room, payload.size() - at);
        adaptation += room - count;
        packet[0] = 0x47;
        packet[1] = static_cast<std::uint8_t>((unitStart ? 0x40U : 0U) | pid >> 8U);
        packet[2] = static_cast<std::uint8_t>(pid & 0xFFU);
        const unsigned int control = (adaptation != 0 ? 0x20U : 0U) | (count != 0 ? 0x10U : 0U);
        packet[3] = static_cast<std::uint8_t>(control | ((count != 0 ? counter++ : counter - 1) & 0x0FU));
        writeAdaptation(packet, adaptation, fields);
        std::copy_n(payload.begin() + static_cast<std::ptrdiff_t>(at), count,
                    packet.begin() + static_cast<std::ptrdiff_t>(kPacketSize - count));
        at += count;
        return packet;
    }

    /// Counts a packet that has its payload already.
    void count(Packet& packet) { packet[3] = static_cast<std::uint8_t>((packet[3] & 0xF0U) | (counter++ & 0x0FU)); }

private:
    static void writeAdaptation(Packet& packet, std::size_t length, const Bytes& fields) {
        if (length == 0) {
            return;
        }
        packet[4] = static_cast<std::uint8_t>(length - 1);
        if (length > 1) {
            packet[5] = 0x00;
            std::copy(fields.begin(), fields.end(), packet.begin() + 5);
        }
    }

    std::uint16_t pid;
    unsigned int counter = 0;
};

void append(Bytes& bytes, std::uint64_t value, unsigned int width) {
    for (; width != 0; --width) {
        bytes.push_back(static_cast<std::uint8_t>(value >> (8U * (width - 1))));
    }
}

/// The content of an adaptation field: flags, the PCR, and the service's TEMI timeline, if any (ISO/IEC 13818-1, clause
/// 2.4.3.5 and Annex U).
Bytes clockFields(std::uint64_t pcr, const Service* temi) {
    constexpr std::uint8_t kPcr = 0x10;
    constexpr std::uint8_t kExtension = 0x01;
    constexpr std::uint8_t kOnlyDescriptors = 0x0F;
    constexpr std::uint8_t kTimelineTag = 0x04;
    constexpr std::uint8_t kLongTimestamp = 0x80;
    Bytes fields = {static_cast<std::uint8_t>(kPcr | (temi != nullptr ? kExtension : 0))};
    append(fields, pcr / 300 << 15U | 0x7E00U | pcr % 300, 6);
    if (temi != nullptr) {
        Bytes timeline = {kLongTimestamp, 0x7F, temi->timelineId};
        append(timeline, temi->timescale, 4);
        append(timeline, temi->mediaTimestampAt(pcr), 8);
        fields.push_back(static_cast<std::uint8_t>(timeline.size() + 3));
        fields.insert(fields.end(), {kOnlyDescriptors, kTimelineTag, static_cast<std::uint8_t>(timeline.size())});
        fields.insert(fields.end(), timeline.begin(), timeline.end());
    }
    return fields;
}

/// A repeated table or stream. When it is due, `unit` returns the payload of one section or PES packet.
struct Source {
    std::uint16_t pid;
    std::uint64_t interval;  // ticks
    std::uint64_t due;       // ticks
    const Service* clockOf;  ///< the service whose PCR it carries, or null
    std::function<Bytes(std::uint64_t ticks)> unit;
};

/// A pointer_field, the section, and stuffing bytes up to the end of the last packet.
Bytes sectionUnit(const Section& section) {
    Bytes unit = {0};
    unit.insert(unit.end(), section.begin(), section.end());
    constexpr std::size_t kRoom = kPacketSize - 4;
    unit.resize((unit.size() + kRoom - 1) / kRoom * kRoom, 0xFF);
    return unit;
}

/// The header has `stuffing` bytes after the PTS.
Bytes pesUnit(std::uint8_t streamId, std::uint64_t ticks, const Bytes& data, std::uint8_t stuffing = 0) {
    const std::uint64_t pts = (ticks + kPresentationDelay) / 300;
    constexpr std::size_t kHeaderBehindLength = 8;
    constexpr std::uint8_t kPtsSize = 5;
    const std::size_t length = data.size() + kHeaderBehindLength + stuffing;
    Bytes unit = {0,
                  0,
                  1,
                  streamId,
                  static_cast<std::uint8_t>(length >> 8U),
                  static_cast<std::uint8_t>(length & 0xFFU),
                  0x84,
                  0x80,
                  static_cast<std::uint8_t>(kPtsSize + stuffing)};
    unit.push_back(static_cast<std::uint8_t>(0x21U | (pts >> 29U & 0x0EU)));
    unit.push_back(static_cast<std::uint8_t>(pts >> 22U));
    unit.push_back(static_cast<std::uint8_t>(0x01U | (pts >> 14U & 0xFEU)));
    unit.push_back(static_cast<std::uint8_t>(pts >> 7U));
    unit.push_back(static_cast<std::uint8_t>(0x01U | (pts << 1U & 0xFEU)));
    unit.insert(unit.end(), stuffing, 0xFF);
    unit.insert(unit.end(), data.begin(), data.end());
    return unit;
}

/// An H.264 access unit with only a delimiter and filler data.
Bytes videoUnit(std::uint64_t ticks) {
    Bytes data = {0, 0, 0, 1, 0x09, 0xF0, 0, 0, 0, 1, 0x0C};
    data.resize(data.size() + 64, 0xFF);
    data.push_back(0x80);
    return pesUnit(0xE0, ticks, data);
}

/// A silent audio frame of 24 ms: MPEG-1 Layer II, 48 kHz, 64 kbit/s, mono.
Bytes audioUnit(std::uint64_t ticks) {
    Bytes frame = {0xFF, 0xFD, 0x44, 0xC0};
    frame.resize(192, 0);
    return pesUnit(0xC0, ticks, frame);
}

/// An empty DVB subtitle display set, which has only its end segment (EN 300 743).
Bytes subtitleUnit(std::uint64_t ticks) {
    return pesUnit(0xBD, ticks, {0x20, 0x00, 0x0F, 0x80, 0x00, 0x01, 0x00, 0x00, 0xFF});
}

/// Teletext without lines: three stuffing data units. Header and data fill the packet (EN 300 472, clause 4.2).
Bytes teletextUnit(std::uint64_t ticks) {
    constexpr std::uint8_t kHeaderStuffing = 31;
    constexpr std::size_t kDataUnit = 44;
    Bytes data = {0x10};
    for (int count = 0; count < 3; ++count) {
        data.insert(data.end(), {0xFF, kDataUnit});
        data.insert(data.end(), kDataUnit, 0xFF);
    }
    return pesUnit(0xBD, ticks, data, kHeaderStuffing);
}

/// The index of the latest state that has begun; none before the first.
template <typename State>
std::optional<std::size_t> stateAt(const std::vector<State>& states, std::uint64_t ticks) {
    std::size_t begun = 0;
    while (begun < states.size() && states[begun].second * kTicks <= ticks) {
        ++begun;
    }
    return begun == 0 ? std::nullopt : std::optional(begun - 1);
}

/// The index of the present event. The last event stays present after its end.
std::size_t presentAt(const Service& service, std::uint64_t ticks) {
    std::size_t present = 0;
    std::uint64_t end = 0;
    while (present + 1 < service.events.size() && (end += service.events[present].duration) * kTicks <= ticks) {
        ++present;
    }
    return present;
}

class Scheduler {
public:
    explicit Scheduler(const Multiplex& newMultiplex) : multiplex(newMultiplex) {
        forEachHeard([this](const Service& service) { addStreams(service); });
        addTable(0x0000, 100, patSection(multiplex));
        forEachHeard([this](const Service& service) { addPmt(service); });
        addTable(0x0010, 2000, nitSection(multiplex));
        addTable(0x0011, 1000, sdtSection(multiplex));
        for (const OtherStream& other : multiplex.otherStreams) {
            addTable(0x0011, 2000, otherSdtSection(other, multiplex.provider));
        }
        forEachHeard([this](const Service& service) {
            addEit(service);
            addAit(service);
            addStreamEvents(service);
            addCarousels(service);
            addPrivateSections(service);
        });
        add(0x0014, 1000, [this](std::uint64_t ticks) {
            return sectionUnit(tdtSection(multiplex, static_cast<std::int64_t>(ticks / kTicks)));
        });
    }

    void run(unsigned int seconds, const PacketSink& sink) {
        for (std::uint64_t slot = 0;; ++slot) {
            const std::uint64_t ticks = packetTicks(slot, multiplex.bitRate);
            if (ticks >= seconds * kTicks) {
                break;
            }
            const Packet packet = packetAt(ticks);
            sink(packet.data());
        }
    }

private:
    /// A carousel, and when its next section is due. A section's packets take as long as its rate says.
    struct CarouselSource {
        CarouselSender sender;
        std::uint64_t due;  // ticks
    };
    /// A unit of which some packets may have been sent.
    struct Sending {
        std::uint16_t pid;
        const Service* clockOf;
        Bytes unit;
        std::size_t at;
        std::uint64_t since;  // ticks
    };

    template <typename Visit>
    void forEachHeard(Visit visit) {
        for (const Service& service : multiplex.services) {
            if (!service.isSilent) {
                visit(service);
            }
        }
    }

    /// Each source starts a millisecond after the one before, so that tables with equal intervals are not all due at
    /// once.
    void add(std::uint16_t pid, std::uint64_t milliseconds, std::function<Bytes(std::uint64_t)> unit) {
        const std::uint64_t begin = sources.size() * kMillisecond;
        sources.push_back({pid, milliseconds * kMillisecond, begin, nullptr, std::move(unit)});
    }

    void addTable(std::uint16_t pid, std::uint64_t milliseconds, const Section& section) {
        add(pid, milliseconds, [unit = sectionUnit(section)](std::uint64_t) { return unit; });
    }

    static bool aitHasEnded(const Service& service, std::uint64_t ticks) {
        return service.ait.end && *service.ait.end * kTicks <= ticks;
    }

    void addPmt(const Service& service) {
        add(service.pmtPid, 100,
            [&service](std::uint64_t ticks) { return sectionUnit(pmtSection(service, aitHasEnded(service, ticks))); });
    }

    void addEit(const Service& service) {
        if (service.events.empty()) {
            return;
        }
        for (const bool following : {false, true}) {
            add(0x0012, 1000, [this, &service, following](std::uint64_t ticks) {
                return sectionUnit(eitSection(multiplex, service, following, presentAt(service, ticks)));
            });
        }
        if (service.hasSchedule) {
            for (const Section& section : eitScheduleSections(multiplex, service)) {
                addTable(0x0012, 2000, section);
            }
        }
    }

    /// Sends only stuffing before the first version and after the AIT's end.
    void addAit(const Service& service) {
        for (unsigned int number = 0; number < (service.ait.versions.empty() ? 0 : service.ait.sections); ++number) {
            add(service.ait.pid, service.ait.interval, [&service, number](std::uint64_t ticks) {
                const std::optional<std::size_t> state = stateAt(service.ait.versions, ticks);
                const bool isSent = state && !aitHasEnded(service, ticks);
                return sectionUnit(isSent ? aitSection(service, number, *state) : Section());
            });
        }
    }

    /// Sends the latest event that has begun, and only stuffing before the first.
    void addStreamEvents(const Service& service) {
        const StreamEvents& events = service.streamEvents;
        if (events.events.empty()) {
            return;
        }
        add(events.pid, 100, [&service](std::uint64_t ticks) {
            const std::optional<std::size_t> state = stateAt(service.streamEvents.events, ticks);
            return sectionUnit(state ? streamEventSection(service, *state) : Section());
        });
        if (!events.object.empty()) {
            for (const Section& section : carouselSections(events)) {
                addTable(events.carouselPid, 500, section);
            }
        }
    }

    void addPrivateSections(const Service& service) {
        for (const PrivateSections& sections : service.privateSections) {
            sources.push_back({sections.pid, kTicks / sections.perSecond, 0, nullptr,
                               [&sections, number = std::uint32_t{0}](std::uint64_t) mutable {
                                   return sectionUnit(privateSection(sections, number++));
                               }});
        }
    }

    void addCarousels(const Service& service) {
        for (const Carousel& carousel : service.carousels) {
            carousels.push_back({CarouselSender(carousel), 0});
        }
    }

    void queueWhatIsDue(std::uint64_t ticks) {
        for (Source& source : sources) {
            if (source.due <= ticks) {
                queue.push_back({source.pid, source.clockOf, source.unit(source.due), 0, ticks});
                source.due += source.interval;
            }
        }
        for (CarouselSource& carousel : carousels) {
            if (carousel.due <= ticks) {
                const CarouselSender::Unit next = carousel.sender.next(ticks);
                queue.push_back({next.pid, nullptr, sectionUnit(next.section), 0, ticks});
                const std::uint64_t packets = queue.back().unit.size() / (kPacketSize - 4);
                carousel.due += packets * kPacketBits * kTicks / carousel.sender.bitRate();
            }
        }
    }

    /// A stream from elsewhere comes with its packets. Its service's clock has packets of its own, on the same PID.
    void addInserted(const Component& component, const Service* clockOf) {
        inserted.emplace_back(*component.stream, component.pid);
        if (clockOf != nullptr) {
            sources.push_back({component.pid, 20 * kMillisecond, 0, clockOf, [](std::uint64_t) { return Bytes(); }});
        }
    }

    void addStreams(const Service& service) {
        const std::uint64_t begin = sources.size() * 2 * kMillisecond;
        for (const Component& component : service.components) {
            const bool hasClock = component.pid == service.pcrPid();
            const Service* const clockOf = hasClock ? &service : nullptr;
            if (component.stream) {
                addInserted(component, clockOf);
                continue;
            }
            switch (component.kind) {
                case Component::Kind::video:
                    sources.push_back({component.pid, 20 * kMillisecond, begin, clockOf, videoUnit});
                    break;
                case Component::Kind::audio:
                    sources.push_back({component.pid, 24 * kMillisecond, begin, clockOf, audioUnit});
                    break;
                case Component::Kind::subtitle:
                    sources.push_back({component.pid, 40 * kMillisecond, begin, clockOf, subtitleUnit});
                    break;
                case Component::Kind::teletext:
                    sources.push_back({component.pid, 40 * kMillisecond, begin, clockOf, teletextUnit});
                    break;
            }
        }
    }

    void checkDelay(std::uint64_t due, std::uint64_t ticks) const {
        if (due + kTicks / 2 < ticks) {
            throw std::length_error("more is to be sent than " + std::to_string(multiplex.bitRate) +
                                    " bit/s have room for");
        }
    }

    /// The one whose packet is due first, if it is.
    InsertedSender* insertedAt(std::uint64_t ticks) {
        InsertedSender* first = nullptr;
        for (InsertedSender& sender : inserted) {
            if (sender.due() <= ticks && (first == nullptr || sender.due() < first->due())) {
                first = &sender;
            }
        }
        return first;
    }

    Packet packetAt(std::uint64_t ticks) {
        queueWhatIsDue(ticks);
        if (!queue.empty()) {
            checkDelay(queue.front().since, ticks);
        }
        // Decoders have buffers for what is early, and none for what is late.
        if (InsertedSender* const sender = insertedAt(ticks)) {
            checkDelay(sender->due(), ticks);
            Packet packet = sender->next();
            writerOf(sender->pid()).count(packet);
            return packet;
        }
        return queue.empty() ? nullPacket() : queuedPacket(ticks);
    }

    PidWriter& writerOf(std::uint16_t pid) { return writers.try_emplace(pid, pid).first->second; }

    Packet queuedPacket(std::uint64_t ticks) {
        Sending& sending = queue.front();
        const bool begins = sending.at == 0;
        const Service* const clockOf = begins ? sending.clockOf : nullptr;
        const Service* const temi = clockOf != nullptr && clockOf->timescale != 0 ? clockOf : nullptr;
        const Bytes fields = clockOf == nullptr ? Bytes() : clockFields(ticks, temi);
        const bool startsUnit = begins && !sending.unit.empty();
        const Packet packet = writerOf(sending.pid).next(sending.unit, sending.at, startsUnit, fields);
        if (sending.at == sending.unit.size()) {
            queue.pop_front();
        }
        return packet;
    }

    static Packet nullPacket() {
        Packet packet;
        packet.fill(0xFF);
        packet[0] = 0x47;
        packet[1] = 0x1F;
        packet[3] = 0x10;
        return packet;
    }

    const Multiplex& multiplex;
    std::vector<Source> sources;
    std::vector<CarouselSource> carousels;
    std::vector<InsertedSender> inserted;
    std::deque<Sending> queue;
    std::map<std::uint16_t, PidWriter> writers;
};

}  // namespace

std::uint64_t packetTicks(std::uint64_t number, std::uint64_t bitRate) {
    // Convert whole seconds and the remainder separately, because the full product can exceed 64 bits.
    const std::uint64_t bits = number * kPacketBits;
    return bits / bitRate * kTicks + bits % bitRate * kTicks / bitRate;
}

void writeMultiplex(const Multiplex& multiplex, unsigned int seconds, const PacketSink& sink) {
    Scheduler(multiplex).run(seconds, sink);
}

}  // namespace tsmake
