// Feeds the AIT catcher.
#include "ait_link.h"

#include "si/section.h"

namespace tvbrowser {

namespace {

/// Whether the catcher has delivered a section on this thread.
thread_local bool hasDelivered = false;

}  // namespace

/// Kept reachable, so that leak checkers do not report it.
AitLink& AitLink::make(const Library& library, Sink sink) {
    static auto& kept = *new std::vector<AitLink*>;
    kept.push_back(new AitLink(library, std::move(sink)));
    return *kept.back();
}

AitLink::AitLink(const Library& library, Sink newSink)
    : catcher(library.catcher), ait(*library.ait), sink(std::move(newSink)) {
    ait.registerClient(this);
}

void AitLink::report(const si::Triplet& channel) {
    constexpr std::uint16_t kUnused = 0;  // the catcher stores the first value and never reads it
    current = channel;
    catcher.updateCurrentChannelInfo(catcher.catcher, kUnused, channel.onid, channel.tsid, channel.sid);
}

void AitLink::replay(const si::Triplet& channel) {
    ait.getCurrentChannelAIT(this, channel.onid, channel.tsid, channel.sid);
}

void AitLink::onChannel(const si::Triplet& channel) {
    report(channel);
    replay(channel);
}

/// The channel that is presented when the browser starts is first named by its AIT. A browser that connects while an
/// AIT is sent can get a section before its channel, which is then 0:0:0. Such a section comes again behind its
/// channel. A section that the catcher has stored at an earlier visit is not delivered, so it is replayed.
void AitLink::onAit(const si::Triplet& channel, const std::string& section) {
    if (channel == si::Triplet{}) {
        return;
    }
    if (!current || !(*current == channel)) {
        report(channel);
    }
    sink.heard(channel, si::sectionVersion(section));
    hasDelivered = false;
    catcher.updateAIT(catcher.catcher, section);
    if (!hasDelivered) {
        replay(channel);
    }
}

void AitLink::onCurrentChannelAIT(std::uint16_t onId, std::uint16_t tsId, std::uint16_t sId,
                                  const std::vector<std::uint8_t>& section) {
    hasDelivered = true;
    sink.delivered({onId, tsId, sId}, section);
}

}  // namespace tvbrowser
