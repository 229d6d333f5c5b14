// StreamEventListeners: browsers' listeners on stream events of the presented service. An event is meant by its
// identifier in decimal, or by its name in a stream event object of one of the service's carousels, which are read
// while somebody asks for a name.
// Threads: the loop's.   Blocks: never.   Fails:   a listener on what is not there is told so by the result.
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
    /// What a listener is for, as a browser names it.
    struct Target {
        std::uint16_t onid;
        std::uint16_t tsid;
        std::uint16_t sid;
        std::int16_t componentTag;  ///< of the stream with the events, or of the carousel; negative: of any
        std::string objectPath;     ///< of the stream event object; empty: any
        std::string eventName;

        bool operator==(const Target& other) const {
            return onid == other.onid && tsid == other.tsid && sid == other.sid && componentTag == other.componentTag &&
                   objectPath == other.objectPath && eventName == other.eventName;
        }
    };
    enum class Result : std::uint32_t { done = 0, noSuchComponent = 1, unknownName = 2, noSuchListener = 3 };
    using Sink = std::function<void(Peer browser, const Target& target, const si::StreamEvent& event)>;
    using Answer = std::function<void(Result result)>;

    /// The loop must outlive this, and run none of its tasks afterwards.
    StreamEventListeners(EventLoop& newLoop, Sink newSink) : loop(newLoop), sink(std::move(newSink)) {}
    StreamEventListeners(const StreamEventListeners&) = delete;
    StreamEventListeners& operator=(const StreamEventListeners&) = delete;
    ~StreamEventListeners();

    /// The presented service's streams from now on. Listeners of other services rest until theirs is presented again.
    /// The demultiplexer must outlive this.
    void follow(broadcast::Demux& newDemux, const broadcast::Channel& channel, const si::Pmt& newPmt);
    /// Nothing is presented, or nothing is known of it yet: all listeners rest.
    void rest();
    /// The answer comes at once, or for a name when the carousels have told it, after ten seconds at the latest.
    void add(Peer browser, const Target& target, Answer answer);
    Result remove(Peer browser, const Target& target);
    void forget(Peer browser);

private:
    /// Of the stream with the events.
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
        std::map<std::uint16_t, std::uint8_t> versions;  // last signalled, by table_id_extension
    };
    /// A name that no carousel has told yet.
    struct Question {
        std::uint64_t number;
        Peer browser;
        Target target;
        Answer answer;
    };
    /// The carousels of the presented service, while or after somebody asked for a name.
    struct Carousels {
        explicit Carousels(std::set<std::uint16_t> pids) : objects(std::move(pids)) {}
        broadcast::EventObjects objects;
        std::vector<broadcast::Demux::Subscription> subscriptions;
        bool isTold = false;  // that they have more than is kept
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
    std::optional<Result> resolve(const Question& question);
    void answerQuestions();
    /// Takes out the questions that `ask` has a result for, and answers them.
    template <typename Ask>
    void answerWhere(Ask ask);
    /// Those that the condition holds for all get one answer.
    template <typename Condition>
    void close(Condition condition, Result result);

    EventLoop& loop;
    Sink sink;
    broadcast::Demux* demux = nullptr;
    broadcast::Channel presented;
    std::optional<si::Pmt> pmt;  // of the presented service
    std::unique_ptr<Carousels> carousels;
    std::list<Listener> listeners;
    std::list<Question> questions;
    std::uint64_t lastQuestion = 0;
};

}  // namespace dtvservice
