// ApplicationsRoom: the presented service's AIT, and what browsers tell of applications.
// Threads: the loop's.   Blocks: never.   Fails: an AIT that cannot be read is told in the log.
#pragma once

#include "core.h"

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
};

}  // namespace dtvservice
