// Broadcast::Inside: what Broadcast keeps, and what it does with the events of the library. inside.cpp has the events,
// broadcast.cpp the calls.
// Threads: the loop's.
// Blocks:  as Broadcast.
// Fails:   as Broadcast.
#pragma once

#include "application_table.h"
#include "broadcast.h"
#include "carousel_files.h"
#include "channel_list.h"
#include "component_list.h"
#include "guide.h"
#include "listener.h"
#include "presence_watch.h"
#include "present_programmes.h"
#include "section_filters.h"
#include "stream_events.h"

namespace tvbrowser {

class Broadcast::Inside final : private BroadcastEvents {
public:
    Inside(const Library& library, const Post& newPost, Sink newSink);
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;
    ~Inside() override;

    std::optional<si::Triplet> presented;
    bool isConnected = false;

    using IsTarget = std::function<bool(const si::Triplet& service)>;
    /// The outcome is an event, also when no DTV service is there.
    template <typename Tune>
    bool tune(IsTarget newIsTarget, Tune command) {
        isTarget = std::move(newIsTarget);
        tunedByPmt.reset();
        if (isConnected) {
            command();
        } else {
            post([this] { failTune(); });
        }
        return true;
    }

private:
    void onChannel(bool started, const si::Triplet& triplet) override;
    void onPmt(const si::Triplet& triplet, bool isFirst, const std::string& section) override;
    void onEit(const std::string& section) override;
    void onComponent(const ComponentReport& report) override;
    void onSelected(std::uint32_t index, std::uint32_t type, std::uint16_t pid) override;
    void onAitHeard(const si::Triplet& triplet, std::uint8_t version) override;
    void onAitSection(const si::Triplet& triplet, const std::vector<std::uint8_t>& section) override;
    void onOther(const std::string& name, const json& value) override { sink(name, value); }

    /// After each look for the DTV service.
    void onLook(bool isThere);
    void onConnected();
    void onGone();
    void countFirstPmt(const si::Triplet& triplet);
    void learnChannel();
    void present(const si::Triplet& triplet);
    void failTune();
    void openTables();
    void addToChannels(si::Bytes section);
    void tellChannelsSoon();
    void tellComponents();
    void tellApplications();
    void warn(const std::string& text);

    const std::shared_ptr<bool> isAlive = std::make_shared<bool>(true);  // expires with the object
    const Post post;
    const Sink sink;

public:
    velmora::dtv::DvbAPIInterface& api;
    SectionFilters filters;
    ChannelList channels;
    ComponentList components;
    PresentProgrammes programmes;
    ApplicationTable applications;
    StreamEvents streamEvents;
    CarouselFiles carouselFiles;
    Guide guide;

private:
    // A DTV service sends a first PMT to a newcomer, to one that has said that it started, and after a tune.
    static constexpr unsigned int kOfNewcomer = 1;
    static constexpr unsigned int kOfTune = 1;

    std::string lastPmt;
    std::optional<si::Triplet> lastLook;      // of the presented service, while no event names it
    IsTarget isTarget;                        // of the tune that is not answered yet; else null
    std::optional<si::Triplet> tunedByPmt;    // whose PMT came before the answer to the tune
    unsigned int expectedPmts = kOfNewcomer;  // first PMTs that are explained and still to come
    bool tellsChannels = false;               // a task is on its way
    const std::shared_ptr<velmora::dtv::DVBServiceListener> listener;
    PresenceWatch watch;
};

}  // namespace tvbrowser
