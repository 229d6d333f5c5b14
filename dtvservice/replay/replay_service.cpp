// Gives each browser a recorded one, and passes its commands on.
#include "replay_service.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <utility>

#include "message_layout.h"
#include "message_transfer.h"
#include "service_log.h"

namespace dtvservice {

using nlohmann::json;
namespace messages = lo::browserdvbservice::messages;

namespace {

constexpr short kDone = 0;

}  // namespace

ReplayService::ReplayService(EventLoop& newLoop, std::string newName, Recording newRecording, const Choice& newChoice)
    : commands(
          newLoop, tap, [this](Browser browser) { connected(browser); }, [this](Browser browser) { gone(browser); }),
      loop(newLoop),
      name(std::move(newName)),
      recording(std::move(newRecording)),
      choice(newChoice) {
    for (const RecordedBrowser& browser : recording.browsers) {
        if (!choice.browser || browser.number == *choice.browser) {
            chosen.push_back(&browser);
        }
    }
    requests.add("status", [this](const json&) { return describe(); });
    handleCommands();
}

void ReplayService::handleCommands() {
#define COMMAND(identifier, operation, Message, fields) \
    commands.on.operation = [this](Browser asker, const auto&... values) { came<messages::Message>(asker, values...); };
#include "browserdvbservice_messages.inc"
    commands.on.cmdUpdateIPCChannelNames = [this](Browser asker, const std::string& queue, const auto&...) {
        openQueue(asker, queue);
    };
    answerWhatIsWaitedFor();
}

/// A browser's thread sleeps until these commands are answered. What the recording does not answer is answered as by a
/// service that has nothing: filters open and close, and no section comes.
void ReplayService::answerWhatIsWaitedFor() {
    commands.on.cmdFilterOpen = [this](Browser asker, const std::string& session, unsigned int pid,
                                       const lo::browserdvbservice::OpenFilterMatchMask_t& matchMask) {
        if (!came<messages::CmdFilterOpen>(asker, session, pid, matchMask)) {
            browsers.tell({asker}, &Events::onBrowserOpenFilterConf, pid, session, kDone);
            browsers.tell({asker}, &Events::onFilterOpened, session, session);
        }
    };
    commands.on.cmdFilterClose = [this](Browser asker, const std::string& session) {
        if (!came<messages::CmdFilterClose>(asker, session)) {
            browsers.tell({asker}, &Events::onBrowserOCloseFilterConf, session, kDone);
            browsers.tell({asker}, &Events::onFilterClosed, session);
        }
    };
    commands.on.cmdSetAudioSource = [this](Browser asker, unsigned int session, const std::string& source) {
        if (!came<messages::CmdSetAudioSource>(asker, session, source)) {
            browsers.tell({asker}, &Events::onSetAudioSourceFinished, session, kDone);
        }
    };
}

void ReplayService::connected(Browser browser) {
    browsers.add(browser);
    const auto player = players.insert_or_assign(browser, newReplayed(browser)).first;
    const RecordedBrowser& recorded = player->second->recorded;
    BLOG_TAGGED(blog::kOrdinary, "browser %u gets what browser %u of the recording got, %zu records\n", browser,
                recorded.number, recorded.steps.size());
    run(browser);
}

/// A browser of several processes gets for each what that one got. A program that was not recorded gets what the others
/// got.
std::unique_ptr<ReplayedBrowser> ReplayService::newReplayed(Browser browser) {
    const std::string program = tap.programOf(browser);
    std::vector<const RecordedBrowser*> fitting;
    std::copy_if(chosen.begin(), chosen.end(), std::back_inserter(fitting),
                 [&](const RecordedBrowser* recorded) { return recorded->program == program; });
    const bool isRecorded = !program.empty() && !fitting.empty();
    const std::vector<const RecordedBrowser*>& next = isRecorded ? fitting : chosen;
    const std::size_t count = begun[isRecorded ? program : std::string()]++;
    if (count != 0 && count % next.size() == 0) {
        BLOG_TAGGED(blog::kUnsupported, "every recorded %s was replayed; the first one begins again\n",
                    isRecorded ? shownName(program).c_str() : "browser");
    }
    return std::make_unique<ReplayedBrowser>(*next[count % next.size()], count / next.size(), choice.pace, browsers,
                                             tap, browser);
}

void ReplayService::gone(Browser browser) {
    players.erase(browser);
    browsers.remove(browser);
    // Nothing waits for its commands any more.
    for (const auto& other : players) {
        runAt(other.first, EventLoop::Clock::now());
    }
}

void ReplayService::openQueue(Browser browser, const std::string& queue) {
    const auto player = players.find(browser);
    if (player != players.end() && !player->second->stage.queue.open(browser, queue) && browsers.mayTell(browser)) {
        BLOG_TAGGED(blog::kFailure, "browser %u: there is no queue %s\n", browser, shownName(queue).c_str());
    }
}

bool ReplayService::came(Browser asker, std::uint32_t identifier, const std::string& image) {
    const auto player = players.find(asker);
    const message_fields::Message* const command = message_fields::findMessage(identifier);
    Cursor::Values values;
    std::string error;
    if (player == players.end() || command == nullptr || !message_fields::readImage(*command, image, values, error)) {
        return false;
    }
    if (isUnanswered(*command)) {
        return false;
    }
    const Cursor::Found found = player->second->take(*command, values);
    tell(asker, *player->second, *command, found);
    run(asker);
    return found == Cursor::Found::next || found == Cursor::Found::early;
}

void ReplayService::tell(Browser asker, const ReplayedBrowser& player, const message_fields::Message& command,
                         Cursor::Found found) {
    if (found == Cursor::Found::next || !browsers.mayTell(asker)) {
        return;
    }
    const Cursor& cursor = player.main();
    const std::string place =
        cursor.isAtEnd() ? "at the end of the recording" : "at record " + std::to_string(cursor.current().record);
    if (found == Cursor::Found::early) {
        BLOG_TAGGED(blog::kOrdinary, "browser %u sends %s early, %s: it is kept for its place\n", asker, command.name,
                    place.c_str());
    } else if (found == Cursor::Found::late) {
        BLOG_TAGGED(blog::kUnsupported, "browser %u sends %s late, %s: the replay has gone on without it\n", asker,
                    command.name, place.c_str());
    } else {
        BLOG_TAGGED(blog::kUnsupported, "browser %u sends %s, which the recording does not have, %s\n", asker,
                    command.name, place.c_str());
    }
}

void ReplayService::run(Browser browser) {
    const auto found = players.find(browser);
    if (found == players.end()) {
        return;
    }
    ReplayedBrowser& player = *found->second;
    const EventLoop::Clock::time_point now = EventLoop::Clock::now();
    const std::optional<EventLoop::Clock::time_point> next = player.run(now, barrierFor(player));
    if (player.main().isAtEnd() && !player.hasToldEnd) {
        player.hasToldEnd = true;
        BLOG_TAGGED(blog::kUnsupported, "browser %u: the recording is at its end\n", browser);
    }
    if (next) {
        runAt(browser, *next);
    }
    if (player.awaited != player.main().awaitedRecord() || player.last != player.main().lastCommand()) {
        moveOthers(player, now);
        player.awaited = player.main().awaitedRecord();
        player.last = player.main().lastCommand();
    }
}

/// The first record that another process has not sent yet.
std::size_t ReplayService::barrierFor(const ReplayedBrowser& player) const {
    std::size_t barrier = Cursor::kNoRecord;
    for (const auto& other : players) {
        if (player.isBeside(*other.second)) {
            barrier = std::min(barrier, other.second->main().awaitedRecord());
        }
    }
    return barrier;
}

/// What one process of a browser has sent moves the others on.
void ReplayService::moveOthers(const ReplayedBrowser& player, EventLoop::Clock::time_point now) {
    for (const auto& [other, each] : players) {
        if (player.isBeside(*each)) {
            if (player.last != player.main().lastCommand()) {
                each->follow(*player.main().lastCommand(), now);
            }
            runAt(other, now);
        }
    }
}

/// At any time there is a task for the next time at which something is due, and none for a later one is kept.
void ReplayService::runAt(Browser browser, EventLoop::Clock::time_point time) {
    ReplayedBrowser& player = *players.at(browser);
    if (!player.wakeUp || time < *player.wakeUp) {
        player.wakeUp = time;
        loop.postAt(time, [this, browser, time] { wake(browser, time); });
    }
}

void ReplayService::wake(Browser browser, EventLoop::Clock::time_point time) {
    const auto found = players.find(browser);
    if (found != players.end() && found->second->wakeUp == time) {
        found->second->wakeUp.reset();
        run(browser);
    }
}

OperatorRequests::Answer ReplayService::answer(const std::string& request) const {
    const json read = json::parse(request, nullptr, false);
    const auto command = read.is_object() ? read.find("command") : read.end();
    if (command != read.end() && command->is_string() && *command != "status") {
        const json refusal = {{"ok", false}, {"error", "a replay takes no " + command->get<std::string>()}};
        return [line = refusal.dump(-1, ' ', false, json::error_handler_t::replace)] { return line; };
    }
    return requests.begin(request);
}

/// What a service without a broadcast has, and where the replay is.
json ReplayService::describe() const {
    json replayed = json::array();
    std::uint64_t drops = 0;
    for (const auto& [browser, player] : players) {
        drops += player->stage.drops;
        replayed.push_back({{"browser", browser},
                            {"recorded_browser", player->recorded.number},
                            {"replayed_records", player->done()},
                            {"records", player->all()}});
    }
    return {{"browsers", browsers.all()},
            {"filters", 0},
            {"queue_drops", drops},
            {"osd_layers", json::array()},
            {"ca_slots", json::array()},
            {"drm_waiting", 0},
            {"drm_messages", json::array()},
            {"inputs", json::array()},
            {"replay", {{"file", name}, {"fast", choice.pace.isFast}, {"replayed_browsers", replayed}}}};
}

}  // namespace dtvservice
