// What happens to the broadcast.
#include "inside.h"

#include <algorithm>

namespace tvbrowser {

namespace {

constexpr unsigned int kPatPid = 0x00;
constexpr unsigned int kNitPid = 0x10;
constexpr unsigned int kSdtPid = 0x11;
constexpr std::uint8_t kPatTable = 0x00;
constexpr std::uint8_t kNitActualTable = 0x40;
constexpr std::uint8_t kSdtActualTable = 0x42;
constexpr std::uint8_t kSdtOtherTable = 0x46;
constexpr std::uint16_t kUnknown = 0xFFFF;

/// The post of all parts. Tasks run on the loop's thread, as the destruction does, so none runs too late.
Post postWhile(const std::shared_ptr<bool>& isAlive, const Post& post) {
    return [alive = std::weak_ptr<bool>(isAlive), post](std::function<void()> task) {
        post([alive, task = std::move(task)] {
            if (!alive.expired()) {
                task();
            }
        });
    };
}

/// Registered before the watch's first look, which connects to the DTV service.
std::shared_ptr<velmora::dtv::DVBServiceListener> registered(velmora::dtv::DvbAPIInterface& api,
                                                             std::shared_ptr<velmora::dtv::DVBServiceListener> it) {
    api.addListener(it);
    return it;
}

}  // namespace

Broadcast::Inside::Inside(const Library& library, const Post& newPost, Sink newSink)
    : post(postWhile(isAlive, newPost)),
      sink(std::move(newSink)),
      api(*library.api),
      filters(*library.filters, post),
      streamEvents(filters, post, sink),
      carouselFiles(filters, post, [this](const std::string& text) { warn(text); }),
      guide(filters),
      listener(registered(api, makeListener(library, post, *this))),
      watch(api, [this](bool isThere) { post([this, isThere] { onLook(isThere); }); }) {
    openTables();
}

Broadcast::Inside::~Inside() {
    api.removeListener(listener);
}

void Broadcast::Inside::openTables() {
    struct Table {
        unsigned int pid;
        std::uint8_t id;
    };
    for (const Table& table : {Table{kPatPid, kPatTable}, Table{kSdtPid, kSdtActualTable},
                               Table{kSdtPid, kSdtOtherTable}, Table{kNitPid, kNitActualTable}}) {
        filters.open(table.pid, SectionFilters::Pattern::table(table.id), SectionFilters::Repetitions::skipped,
                     [this](si::Bytes section) { addToChannels(section); });
    }
}

void Broadcast::Inside::onLook(bool isThere) {
    if (isThere != isConnected) {
        isConnected = isThere;
        if (isThere) {
            onConnected();
        } else {
            onGone();
        }
        sink("service", {{"connected", isThere}});
    }
    if (isThere) {
        learnChannel();
        filters.retry();
        if (!components.isWhole()) {
            tellComponents();
        }
    }
    if (guide.takeNews()) {
        sink("scheduleChanged", nullptr);
    }
}

/// A DTV service that has come knows nothing of this browser, and may play another broadcast.
void Broadcast::Inside::onConnected() {
    ++expectedPmts;  // the answer to notifyMwhbStart()
    channels.startAgain();
    guide.forget();
    streamEvents.forgetVersions();
    carouselFiles.startAgain();
    filters.onConnected();
    api.notifyMwhbStart();
}

void Broadcast::Inside::onGone() {
    expectedPmts = kOfNewcomer;
    tunedByPmt.reset();
    filters.onGone();
    if (isTarget) {
        failTune();
    }
}

/// Of a service that is presented and has no PMT, no event tells when the browser starts. The library's values are not
/// those of one channel at every moment, so two looks must give the same.
void Broadcast::Inside::learnChannel() {
    int onid = 0;
    int tsid = 0;
    int sid = 0;
    if (presented || api.getCurrentChannelInfo(onid, tsid, sid) != 0) {
        return;
    }
    const si::Triplet look{static_cast<std::uint16_t>(onid), static_cast<std::uint16_t>(tsid),
                           static_cast<std::uint16_t>(sid)};
    if (lastLook == look) {
        present(look);
    }
    lastLook = look;
}

void Broadcast::Inside::present(const si::Triplet& triplet) {
    presented = triplet;
    lastPmt.clear();
    channels.addNetwork(triplet.tsid, triplet.onid);
    tellChannelsSoon();
    components.clear();
    programmes.clear(triplet);
    applications.clear(triplet);
    streamEvents.setService(triplet);
    carouselFiles.setService(triplet);
    // The filters end when another multiplex is presented, or another DTV service.
    filters.renew();
    sink("channelChanged", {{"started", true}, {"channel", tripletValue(triplet)}});
}

void Broadcast::Inside::onChannel(bool started, const si::Triplet& triplet) {
    const bool isKnown = triplet.tsid != kUnknown && triplet.sid != kUnknown;
    isTarget = nullptr;
    if (started && std::exchange(tunedByPmt, std::nullopt) == triplet) {
        return;  // all that comes behind an answer has come
    }
    if (started && isKnown) {
        expectedPmts = std::max(expectedPmts, kOfTune);
        present(triplet);
        return;
    }
    if (!presented && isKnown) {
        present(triplet);
    }
    failTune();
}

void Broadcast::Inside::failTune() {
    isTarget = nullptr;
    sink("channelChanged", {{"started", false}, {"channel", presented ? tripletValue(*presented) : json()}});
}

/// A first PMT that nothing explains is that of a tune whose answer comes later, or of a DTV service that was started
/// between two looks.
void Broadcast::Inside::countFirstPmt(const si::Triplet& triplet) {
    if (expectedPmts == 0 && isTarget && isTarget(triplet)) {
        isTarget = nullptr;
        tunedByPmt = triplet;
    } else if (expectedPmts == 0 && isConnected) {
        onLook(false);
        onLook(true);
    }
    expectedPmts -= std::min(expectedPmts, 1U);
}

/// The service that is presented when the browser starts is named by its PMT.
void Broadcast::Inside::onPmt(const si::Triplet& triplet, bool isFirst, const std::string& section) {
    if (isFirst) {
        countFirstPmt(triplet);
    }
    if (!presented || !(*presented == triplet)) {
        present(triplet);
    }
    if (section == lastPmt) {
        return;
    }
    std::string error;
    const std::optional<si::Pmt> pmt = si::parsePmt(section, error);
    if (!pmt) {
        warn(error);
        return;
    }
    lastPmt = section;
    components.setPmt(*pmt);
    applications.setPmt(*pmt);
    streamEvents.setPmt(*pmt);
    carouselFiles.setPmt(*pmt);
    if (components.isWhole()) {
        tellComponents();
    }
    tellApplications();
}

void Broadcast::Inside::onEit(const std::string& section) {
    std::string error;
    if (programmes.add(section, error)) {
        sink("programmesChanged", nullptr);
    }
    if (!error.empty()) {
        warn(error);
    }
}

void Broadcast::Inside::onComponent(const ComponentReport& report) {
    components.add(report);
    if (components.isLast(report.index)) {
        tellComponents();
    }
}

void Broadcast::Inside::tellComponents() {
    const std::vector<std::uint32_t> types = components.news();
    if (!types.empty()) {
        sink("componentsChanged", {{"types", types}});
    }
}

void Broadcast::Inside::onSelected(std::uint32_t index, std::uint32_t type, std::uint16_t pid) {
    constexpr std::uint16_t kNoPid = 0x1FFF;
    if (components.select(type, index, pid)) {
        sink("selectedComponentChanged", {{"type", type}, {"pid", pid == kNoPid ? json() : json(pid)}});
    }
}

void Broadcast::Inside::onAitHeard(const si::Triplet& triplet, std::uint8_t version) {
    if (presented == triplet) {
        applications.hear(version);
    }
}

void Broadcast::Inside::onAitSection(const si::Triplet& triplet, const std::vector<std::uint8_t>& section) {
    std::string error;
    if (presented == triplet) {
        applications.add(section, error);
        tellApplications();
    }
    if (!error.empty()) {
        warn(error);
    }
}

void Broadcast::Inside::tellApplications() {
    if (applications.takeNews()) {
        sink("applicationsChanged", nullptr);
    }
}

void Broadcast::Inside::addToChannels(si::Bytes section) {
    channels.add(section);
    tellChannelsSoon();
}

/// Tables have many sections, which come together.
void Broadcast::Inside::tellChannelsSoon() {
    if (!std::exchange(tellsChannels, true)) {
        post([this] {
            tellsChannels = false;
            if (channels.renew()) {
                sink("channelsChanged", nullptr);
            }
        });
    }
}

void Broadcast::Inside::warn(const std::string& text) {
    sink("warning", {{"text", safeText(text)}});
}

}  // namespace tvbrowser
