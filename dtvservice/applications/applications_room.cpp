// Sends AITs to browsers, and logs what browsers report about applications.
#include "applications_room.h"

#include "si/ait.h"

namespace dtvservice {

using broadcast::Channel;
using broadcast::Section;

ApplicationsRoom::ApplicationsRoom(Core& newCore) : core(newCore) {
    core.commands.on.cmdTriggerAitReparse = calls(*this, &ApplicationsRoom::cmdTriggerAitReparse);
    core.commands.on.cmdHandleHbbtvStatus = calls(*this, &ApplicationsRoom::cmdHandleHbbtvStatus);
    core.commands.on.cmdSendOpAppInstallStatus = calls(*this, &ApplicationsRoom::cmdSendOpAppInstallStatus);
}

void ApplicationsRoom::cmdTriggerAitReparse(Browser asker) {
    if (const Channel* const channel = core.presented()) {
        tellAit(*channel, {asker});
    }
}

void ApplicationsRoom::cmdHandleHbbtvStatus(Browser asker, int status) {
    if (core.browsers.mayTell(asker)) {
        BLOG_TAGGED(blog::kOrdinary, "browser %u: application start status %d\n", asker, status);
    }
}

void ApplicationsRoom::cmdSendOpAppInstallStatus(Browser asker, lo::browserdvbservice::OpappType type,
                                                 lo::browserdvbservice::OpappInstallStatus status) {
    if (core.browsers.mayTell(asker)) {
        BLOG_TAGGED(blog::kOrdinary, "browser %u: operator application of type %d, install status %d\n", asker,
                    static_cast<int>(type), static_cast<int>(status));
    }
}

void ApplicationsRoom::aitChanged(const Channel&, const Section& section) {
    tellAitSection(section, core.browsers.all());
}

void ApplicationsRoom::aitSignalled(const Channel& channel) {
    tellAitState(channel, core.browsers.all());
}

void ApplicationsRoom::tell(Part part, const Channel& channel, const Audience& to) {
    if (part == Part::ait) {
        tellAit(channel, to);
        tellAitState(channel, to);
    }
}

/// Sends the channel first, so that a browser knows to which service the sections belong.
void ApplicationsRoom::tellAit(const Channel& channel, const Audience& to) {
    tellAitChannel(channel, to);
    for (const Section& section : core.received().si.ait(channel.serviceId)) {
        tellAitSection(section, to);
    }
}

void ApplicationsRoom::tellAitChannel(const Channel& channel, const Audience& to) {
    core.browsers.tell(to, &Events::onAitChannelInfoUpdated, 0, channel.networkId(), channel.transportStreamId,
                       channel.serviceId);
}

/// Sends the section, then the values of each of its applications.
void ApplicationsRoom::tellAitSection(const Section& section, const Audience& to) {
    core.browsers.tell(to, &Events::onAitSectionAvailable, {section.begin(), section.end()});
    std::string error;
    const std::optional<si::Ait> ait = si::parseAit(section, error);
    if (!ait) {
        if (const auto line = messages.tell(error)) {
            BLOG_TAGGED(blog::kUnsupported, "%s\n", line->c_str());
        }
        return;
    }
    for (const si::Ait::Application& application : ait->applications) {
        const si::Ait::Profile profile =
            application.profiles.empty() ? si::Ait::Profile() : application.profiles.front();
        core.browsers.tell(to, &Events::onAitInfoAvailable, application.organisationId, application.applicationId,
                           application.controlCode, profile.major, profile.minor, profile.micro, application.urlBase(),
                           application.initialPath, application.priority);
        for (const std::string& boundary : application.boundaries) {
            core.browsers.tell(to, &Events::onAitBoundaryExtensionAvailable, application.organisationId,
                               application.applicationId, boundary);
        }
    }
}

void ApplicationsRoom::tellAitState(const Channel& channel, const Audience& to) {
    constexpr unsigned short kNone = 0;
    constexpr unsigned short kSignalled = 1;
    core.browsers.tell(to, &Events::onAitParsingStateChanged,
                       core.received().si.signalsHbbTv(channel.serviceId) ? kSignalled : kNone);
}

}  // namespace dtvservice
