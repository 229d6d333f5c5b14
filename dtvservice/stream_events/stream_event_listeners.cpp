// Follows stream descriptor sections, and reads the names of events from carousels.
#include "stream_event_listeners.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "service_log.h"

namespace dtvservice {

using broadcast::EventObjects;
using si::StreamEvent;

namespace {

constexpr std::chrono::seconds kLongestQuestion{10};
/// An event is sent in sections with one or a few values of table_id_extension.
constexpr std::size_t kMostVersions = 256;

std::optional<std::uint16_t> eventIdOf(const std::string& name) {
    std::uint16_t id = 0;
    const auto [end, failure] = std::from_chars(name.data(), name.data() + name.size(), id);
    return failure == std::errc() && end == name.data() + name.size() ? std::optional<std::uint16_t>(id) : std::nullopt;
}

/// PIDs with DSM-CC messages: streams of type B (ISO/IEC 13818-6), which carousels use, and of type D, which allows all
/// kinds of messages.
std::set<std::uint16_t> carouselPids(const si::Pmt& pmt) {
    constexpr std::uint8_t kTypeB = 0x0B;
    constexpr std::uint8_t kTypeD = 0x0D;
    std::set<std::uint16_t> pids;
    for (const si::Pmt::Stream& stream : pmt.streams) {
        if (stream.streamType == kTypeB || stream.streamType == kTypeD) {
            pids.insert(stream.pid);
        }
    }
    return pids;
}

std::string withoutSlash(const std::string& path) {
    return path.substr(std::min(path.find_first_not_of('/'), path.size()));
}

}  // namespace

StreamEventListeners::~StreamEventListeners() {
    stopReading();
    for (Listener& listener : listeners) {
        unsubscribe(listener);
    }
}

void StreamEventListeners::stopReading() {
    if (carousels) {
        for (const broadcast::Demux::Subscription subscription : carousels->subscriptions) {
            demux->unsubscribe(subscription);
        }
        carousels.reset();
    }
}

void StreamEventListeners::rest() {
    stopReading();
    for (Listener& listener : listeners) {
        unsubscribe(listener);
    }
    pmt.reset();
    close([](const Question&) { return true; }, Result::noSuchComponent);
}

/// Keeps the signalled versions, so that a service that is presented again does not signal its events twice.
void StreamEventListeners::follow(broadcast::Demux& newDemux, const broadcast::Channel& channel,
                                  const si::Pmt& newPmt) {
    stopReading();
    for (Listener& listener : listeners) {
        unsubscribe(listener);
    }
    demux = &newDemux;
    presented = channel;
    pmt = newPmt;
    for (Listener& listener : listeners) {
        subscribe(listener);
    }
    close([this](const Question& question) { return !isPresented(question.target); }, Result::noSuchComponent);
    if (!questions.empty()) {
        readCarousels();
        answerQuestions();
    }
}

void StreamEventListeners::readCarousels() {
    if (carousels) {
        return;
    }
    const std::set<std::uint16_t> pids = carouselPids(*pmt);
    carousels = std::make_unique<Carousels>(pids);
    for (const std::uint16_t pid : pids) {
        carousels->subscriptions.push_back(
            demux->subscribe(pid, [this, pid](si::Bytes section) { onCarouselSection(pid, section); }));
    }
}

void StreamEventListeners::onCarouselSection(std::uint16_t pid, si::Bytes section) {
    if (!carousels || !carousels->objects.onSection(pid, section)) {
        return;
    }
    if (carousels->objects.hasPassedOver() && !std::exchange(carousels->isTold, true)) {
        BLOG_TAGGED(blog::kUnsupported,
                    "the carousels of service %s have more directories and stream events than are kept; the others "
                    "are passed over\n",
                    presented.triplet().c_str());
    }
    answerQuestions();
}

void StreamEventListeners::add(Peer browser, const Target& target, Answer answer) {
    if (!isPresented(target)) {
        answer(Result::noSuchComponent);
        return;
    }
    if (!mayAdd(browser, target)) {
        answer(Result::tooMany);
        return;
    }
    if (const std::optional<std::uint16_t> id = eventIdOf(target.eventName)) {
        answer(
            start(browser, target, *id, {StreamTag::Kind::component, static_cast<std::uint16_t>(target.componentTag)}));
        return;
    }
    questions.push_back({browser, target, std::move(answer), EventLoop::Clock::now() + kLongestQuestion});
    readCarousels();
    answerQuestions();
    waitForDeadline();
}

bool StreamEventListeners::mayAdd(Peer browser, const Target& target) const {
    const auto isTheirs = [browser](const auto& each) { return each.browser == browser; };
    const auto asked = std::count_if(questions.begin(), questions.end(), isTheirs);
    const auto followed = std::count_if(listeners.begin(), listeners.end(), isTheirs);
    return static_cast<std::size_t>(asked + followed) < kMostListeners &&
           target.objectPath.size() + target.eventName.size() <= kLongestName;
}

/// One task for all questions, because they have the same patience.
void StreamEventListeners::waitForDeadline() {
    if (isWaiting || questions.empty()) {
        return;
    }
    isWaiting = true;
    loop.postAt(questions.front().deadline, [this] {
        isWaiting = false;
        const auto now = EventLoop::Clock::now();
        close([now](const Question& question) { return question.deadline <= now; }, Result::unknownName);
        waitForDeadline();
    });
}

StreamEventListeners::Result StreamEventListeners::start(Peer browser, const Target& target, std::uint16_t eventId,
                                                         StreamTag tag) {
    listeners.push_back({browser, target, eventId, tag, 0, {}});
    if (!subscribe(listeners.back())) {
        listeners.pop_back();
        return Result::noSuchComponent;
    }
    return Result::done;
}

/// Whether object and component of the event match the target; the name does.
bool StreamEventListeners::isMeant(const Target& target, const EventObjects::Named& event) const {
    const std::string path = withoutSlash(target.objectPath);
    if (!path.empty() && path != event.path) {
        return false;
    }
    if (target.componentTag < 0) {
        return true;
    }
    const si::Pmt::Stream* const stream =
        streamOf({StreamTag::Kind::component, static_cast<std::uint16_t>(target.componentTag)});
    const auto& tags = event.associationTags;
    return stream != nullptr &&
           (stream->pid == event.carouselPid || std::any_of(tags.begin(), tags.end(), [stream](std::uint16_t tag) {
                return si::hasAssociationTag(*stream, tag);
            }));
}

/// No result while the carousels are incomplete and the name may still be found. Looks at each event once.
std::optional<StreamEventListeners::Result> StreamEventListeners::resolve(Question& question) {
    const EventObjects& objects = carousels->objects;
    if (std::exchange(question.searches, objects.searches()) != objects.searches()) {
        question.seen = 0;
    }
    const std::vector<std::size_t>& places = objects.placesOf(question.target.eventName);
    for (auto place = std::lower_bound(places.begin(), places.end(), question.seen); place != places.end(); ++place) {
        const EventObjects::Named& event = objects.events()[*place];
        if (isMeant(question.target, event)) {
            return startNamed(question, event);
        }
    }
    question.seen = objects.events().size();
    return objects.isComplete() ? std::optional(Result::unknownName) : std::nullopt;
}

/// The first of the event's streams that the PMT lists.
StreamEventListeners::Result StreamEventListeners::startNamed(const Question& question,
                                                              const EventObjects::Named& event) {
    for (const std::uint16_t tag : event.associationTags) {
        const StreamTag streamTag = {StreamTag::Kind::association, tag};
        if (streamOf(streamTag) != nullptr) {
            return start(question.browser, question.target, event.eventId, streamTag);
        }
    }
    return Result::noSuchComponent;
}

void StreamEventListeners::answerQuestions() {
    answerWhere([this](Question& question) { return resolve(question); });
}

template <typename Ask>
void StreamEventListeners::answerWhere(Ask ask) {
    for (auto question = questions.begin(); question != questions.end();) {
        const std::optional<Result> result = ask(*question);
        if (result) {
            question->answer(*result);
            question = questions.erase(question);
        } else {
            ++question;
        }
    }
}

template <typename Condition>
void StreamEventListeners::close(Condition condition, Result result) {
    answerWhere([&](const Question& question) { return condition(question) ? std::optional(result) : std::nullopt; });
}

/// A pending request to add the listener is answered as failed.
StreamEventListeners::Result StreamEventListeners::remove(Peer browser, const Target& target) {
    close([&](const Question& question) { return question.browser == browser && question.target == target; },
          Result::unknownName);
    for (auto listener = listeners.begin(); listener != listeners.end(); ++listener) {
        if (listener->browser == browser && listener->target == target) {
            unsubscribe(*listener);
            listeners.erase(listener);
            return Result::done;
        }
    }
    return Result::noSuchListener;
}

void StreamEventListeners::forget(Peer browser) {
    questions.remove_if([browser](const Question& question) { return question.browser == browser; });
    listeners.remove_if([this, browser](Listener& listener) {
        if (listener.browser == browser) {
            unsubscribe(listener);
        }
        return listener.browser == browser;
    });
}

/// A presented service whose network is still unknown matches any network.
bool StreamEventListeners::isPresented(const Target& target) const {
    return pmt && pmt->serviceId == target.sid && presented.transportStreamId == target.tsid &&
           presented.originalNetworkId.value_or(target.onid) == target.onid;
}

const si::Pmt::Stream* StreamEventListeners::streamOf(StreamTag tag) const {
    const auto found = std::find_if(pmt->streams.begin(), pmt->streams.end(), [tag](const si::Pmt::Stream& stream) {
        return tag.kind == StreamTag::Kind::association ? si::hasAssociationTag(stream, tag.value)
                                                        : si::componentTag(stream) == tag.value;
    });
    return found == pmt->streams.end() ? nullptr : &*found;
}

bool StreamEventListeners::subscribe(Listener& listener) {
    const si::Pmt::Stream* const stream = isPresented(listener.target) ? streamOf(listener.tag) : nullptr;
    if (stream == nullptr) {
        return false;
    }
    listener.subscription =
        demux->subscribe(stream->pid, [this, &listener](si::Bytes section) { onSection(listener, section); });
    return true;
}

void StreamEventListeners::unsubscribe(Listener& listener) {
    if (listener.subscription != 0) {
        demux->unsubscribe(listener.subscription);
        listener.subscription = 0;
    }
}

/// Signals each version of a section once, when it first arrives.
void StreamEventListeners::onSection(Listener& listener, si::Bytes section) {
    for (const StreamEvent& event : si::streamEvents(section)) {
        if (event.id != listener.eventId) {
            continue;
        }
        const std::uint16_t extension = si::tableIdExtension(section);
        const std::uint8_t version = si::sectionVersion(section);
        if (listener.versions.size() > kMostVersions) {
            listener.versions.clear();
        }
        const auto [known, isNew] = listener.versions.try_emplace(extension, version);
        if (isNew || known->second != version) {
            known->second = version;
            sink(listener.browser, listener.target, event);
        }
    }
}

}  // namespace dtvservice
