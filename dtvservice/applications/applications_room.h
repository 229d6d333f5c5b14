// ApplicationsRoom: sends browsers the presented service's AIT, and logs the status of applications that they report.
// Threads: the loop's.
// Blocks:  never.
// Fails:   a malformed AIT is logged.
#pragma once

#include "core.h"
#include "repeated_messages.h"

namespace dtvservice {

class ApplicationsRoom : public Room {
public:
    explicit ApplicationsRoom(Core& newCore);

    void aitChanged(const broadcast::Channel& channel, const broadcast::Section& section) override;
    void aitSignalled(const broadcast::Channel& channel) override;
    void tell(Part part, const broadcast::Channel& channel, const Audience& to) override;

private:
    void cmdTriggerAitReparse(Browser asker);
    void cmdHandleHbbtvStatus(Browser asker, int status);
    void cmdSendOpAppInstallStatus(Browser asker, lo::browserdvbservice::OpappType type,
                                   lo::browserdvbservice::OpappInstallStatus status);
    void tellAit(const broadcast::Channel& channel, const Audience& to);
    void tellAitChannel(const broadcast::Channel& channel, const Audience& to);
    void tellAitSection(const broadcast::Section& section, const Audience& to);
    void tellAitState(const broadcast::Channel& channel, const Audience& to);

    Core& core;
    RepeatedMessages messages;
};

}  // namespace dtvservice
