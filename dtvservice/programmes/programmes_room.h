// ProgrammesRoom: the programme guide of all inputs. It reads the EIT schedule only from the first request on, or from
// the start if it is told so.
// Threads: the loop's; a guide is put together on the thread of who asks for it.
// Blocks:  never.
// Fails:   what has no room is logged.
#pragma once

#include <map>

#include "core.h"
#include "guide.h"
#include "section_subscription.h"

namespace dtvservice {

/// When the schedule is read.
enum class Collecting { onRequest, fromTheStart };

class ProgrammesRoom : public Room {
public:
    ProgrammesRoom(Core& newCore, Collecting collecting);

    void channelListChanged(Multiplex& multiplex) override;

private:
    OperatorRequests::Rest epg(const nlohmann::json& request);
    void start();
    void follow(Multiplex& multiplex);
    void onSection(std::size_t input, si::Bytes section);
    std::vector<GuideChannel> channels() const;

    Core& core;
    std::optional<EventLoop::Clock::time_point> began;
    std::map<const Multiplex*, broadcast::SectionSubscription> subscriptions;
    EitSections sections;
    RepeatedMessages messages;
};

}  // namespace dtvservice
