// StreamEventListeners: browsers' listeners for stream events of the presented service. A browser names an event by its
// identifier in decimal, or by its name in a stream event object of one of the service's carousels. The carousels are
// read only after a browser has asked for a name.
// Threads: the loop's.
// Blocks:  never.
// Fails:   the result says why a listener could not be added.
#pragma once

#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "demux.h"
#include "event_loop.h"
#include "event_objects.h"
#include "si/stream_event.h"
#include "si/tables.h"
#include "si_database.h"

namespace dtvservice {

class StreamEventListeners {
public:
    using Peer = std::uint32_t;
    /// Limits per browser.
    static constexpr std::size_t kMostListeners = 256;  // with the requests that wait for an answer
    static constexpr std::size_t kLongestName = 1024;   // bytes of object path and event name together

    /// The event of a listener, as the browser names it.
    struct Target {
        std::uint16_t onid;
        std::uint16_t tsid;
        std::uint16_t sid;
        std::int16_t componentTag;  ///< of the stream with the events or of the carousel; negative: any
        std::string objectPath;     ///< of the stream event object; empty: any
        std::string eventName;

        bool operator==(const Target& other) const {
            return onid == other.onid && tsid == other.tsid && sid == other.sid && componentTag == other.componentTag &&
                   objectPath == other.objectPath && eventName == other.eventName;
        }
    };
    enum class Result : std::uint32_t {
        done = 0,
        noSuchComponent = 1,
        unknownName = 2,
        noSuchListener = 3,
        tooMany = 4,  ///< the browser has as many listeners as it may have, or the name is too long
    };
    using Sink = std::function<void(Peer browser, const Target& target, const si::StreamEvent& event)>;
    using Answer = std::function<void(Result result)>;

    /// The loop must outlive this object, and run no task after this object ends.
    StreamEventListeners(EventLoop& newLoop, Sink newSink) : loop(newLoop), sink(std::move(newSink)) {}
    StreamEventListeners(const StreamEventListeners&) = delete;
    StreamEventListeners& operator=(const StreamEventListeners&) = delete;
    ~StreamEventListeners();

    /// From now on follows the streams of this presented service. Listeners of other services get nothing until their
    /// service is presented again. The demultiplexer must outlive this object.
    void follow(broadcast::Demux& newDemux, const broadcast::Channel& channel, const si::Pmt& newPmt);
    /// Suspends all listeners, because nothing is presented or the service's PMT is unknown.
    void rest();
    /// Answers at once, or for a name after the carousels have been read, after ten seconds at the latest.
    void add(Peer browser, const Target& target, Answer answer);
    Result remove(Peer browser, const Target& target);
    void forget(Peer browser);

private:
    /// Identifies the stream with the events.
    struct StreamTag {
        enum class Kind { component, association };
        Kind kind;
        std::uint16_t value;
    };
    struct Listener {
        Peer browser;
        Target target;
        std::uint16_t eventId;
        StreamTag tag;
        broadcast::Demux::Subscription subscription = 0;
        std::map<std::uint16_t, std::uint8_t> versions;  // last signalled version, by table_id_extension, limited
    };
    /// A request for a name that has not been found in a carousel yet.
    struct Question {
        Peer browser;
        Target target;
        Answer answer;
        EventLoop::Clock::time_point deadline;
        std::uint64_t searches = 0;  // of the carousels, when `seen` was counted
        std::size_t seen = 0;        // events of the carousels that are not this one
    };
    /// The carousels of the presented service, from the first request for a name on.
    struct Carousels {
        explicit Carousels(std::set<std::uint16_t> pids) : objects(std::move(pids)) {}
        broadcast::EventObjects objects;
        std::vector<broadcast::Demux::Subscription> subscriptions;
        bool isTold = false;  // the warning that they exceed the limit has been logged
    };

    void stopReading();
    void readCarousels();
    void onCarouselSection(std::uint16_t pid, si::Bytes section);
    const si::Pmt::Stream* streamOf(StreamTag tag) const;
    bool isPresented(const Target& target) const;
    Result start(Peer browser, const Target& target, std::uint16_t eventId, StreamTag tag);
    bool subscribe(Listener& listener);
    void unsubscribe(Listener& listener);
    void onSection(Listener& listener, si::Bytes section);
    bool isMeant(const Target& target, const broadcast::EventObjects::Named& event) const;
    std::optional<Result> resolve(Question& question);
    Result startNamed(const Question& question, const broadcast::EventObjects::Named& event);
    bool mayAdd(Peer browser, const Target& target) const;
    void answerQuestions();
    void waitForDeadline();
    /// Answers and removes the questions for which `ask` gives a result.
    template <typename Ask>
    void answerWhere(Ask ask);
    /// Answers and removes the questions that meet the condition, all with the same result.
    template <typename Condition>
    void close(Condition condition, Result result);

    EventLoop& loop;
    Sink sink;
    broadcast::Demux* demux = nullptr;
    broadcast::Channel presented;
    std::optional<si::Pmt> pmt;  // of the presented service
    std::unique_ptr<Carousels> carousels;
    std::list<Listener> listeners;
    std::list<Question> questions;  // in the order of their deadlines
    bool isWaiting = false;         // for the first deadline
};

}  // namespace dtvservice
