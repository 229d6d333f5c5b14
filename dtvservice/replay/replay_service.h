// ReplayService: a DTV service that has no broadcast but a recording. Each browser that connects gets the events and
// sections of the next recorded browser of its program; what it sends moves the recording on.
// Threads: the loop's; answer() too; commands arrive on the transport's.
// Blocks:  never.
// Fails:   never; what differs from the recording is in the log.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

#include "commands.h"
#include "operator_requests.h"
#include "replayed_browser.h"

namespace dtvservice {

class ReplayService {
public:
    struct Choice {
        Pace pace;
        std::optional<std::uint32_t> browser;  ///< only this recorded browser; else all in their order
    };

    /// The loop must outlive this object, and run no task after it ends. The recording has a browser of that choice.
    ReplayService(EventLoop& newLoop, std::string newName, Recording newRecording, const Choice& newChoice);
    ReplayService(const ReplayService&) = delete;
    ReplayService& operator=(const ReplayService&) = delete;

    BusTap tap;
    Browsers browsers{tap};
    Commands commands;

    /// The answer to an operator's line.
    OperatorRequests::Answer answer(const std::string& request) const;

private:
    void handleCommands();
    void answerWhatIsWaitedFor();
    void connected(Browser browser);
    void gone(Browser browser);
    std::unique_ptr<ReplayedBrowser> newReplayed(Browser browser);
    void openQueue(Browser browser, const std::string& name);
    /// Whether the recording answers the command.
    template <typename Command, typename... Values>
    bool came(Browser asker, const Values&... values) {
        return came(asker, Command::header().messageId, MessageImage::of(values...));
    }
    bool came(Browser asker, std::uint32_t identifier, const std::string& image);
    void tell(Browser asker, const ReplayedBrowser& player, const message_fields::Message& command,
              Cursor::Found found);
    void run(Browser browser);
    std::size_t barrierFor(const ReplayedBrowser& player) const;
    void moveOthers(const ReplayedBrowser& player, EventLoop::Clock::time_point now);
    void runAt(Browser browser, EventLoop::Clock::time_point time);
    void wake(Browser browser, EventLoop::Clock::time_point time);
    nlohmann::json describe() const;

    EventLoop& loop;
    std::string name;
    Recording recording;
    Choice choice;
    std::vector<const RecordedBrowser*> chosen;
    std::map<std::string, std::size_t> begun;  // recorded browsers of a program, again and again
    OperatorRequests requests;
    std::map<Browser, std::unique_ptr<ReplayedBrowser>> players;
};

}  // namespace dtvservice
