// The listener: posts each event of the library to the loop, and feeds the AIT catcher.
// Threads: the transport thread calls it; BroadcastEvents is called on the loop's thread.
// Blocks:  as long as the AIT catcher does.
// Fails:   never.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "component_list.h"
#include "dvb_service_listener.h"
#include "library.h"
#include "values.h"

namespace tvbrowser {

/// What happens to the broadcast, for the loop's thread.
class BroadcastEvents {
public:
    virtual ~BroadcastEvents() = default;

    virtual void onChannel(bool started, const si::Triplet& triplet) = 0;
    /// `isFirst`: of a service that is presented, not a change.
    virtual void onPmt(const si::Triplet& triplet, bool isFirst, const std::string& section) = 0;
    virtual void onEit(const std::string& section) = 0;
    virtual void onComponent(const ComponentReport& report) = 0;
    virtual void onSelected(std::uint32_t index, std::uint32_t type, std::uint16_t pid) = 0;
    /// As AitLink::Sink.
    virtual void onAitHeard(const si::Triplet& triplet, std::uint8_t version) = 0;
    virtual void onAitSection(const si::Triplet& triplet, const std::vector<std::uint8_t>& section) = 0;
    /// An event that is only passed on.
    virtual void onOther(const std::string& name, const json& value) = 0;
};

/// `post` runs a task as long as `events` is there, and drops it afterwards.
std::shared_ptr<velmora::dtv::DVBServiceListener> makeListener(const Library& library, const Post& post,
                                                               BroadcastEvents& events);

}  // namespace tvbrowser
