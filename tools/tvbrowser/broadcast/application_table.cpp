// Writes applications.
#include "application_table.h"

#include "carousel_url.h"

namespace tvbrowser {

namespace {

constexpr std::uint16_t kProtocolCarousel = 0x0001;

json namesOf(const si::Ait::Application& application) {
    json names = json::array();
    for (const si::Ait::Name& name : application.names) {
        names.push_back({{"language", safeText(name.language)}, {"text", safeText(name.text)}});
    }
    return names;
}

json profilesOf(const si::Ait::Application& application) {
    json profiles = json::array();
    for (const si::Ait::Profile& each : application.profiles) {
        profiles.push_back(
            {{"profile", each.profile}, {"major", each.major}, {"minor", each.minor}, {"micro", each.micro}});
    }
    return profiles;
}

/// Of the first transport by a carousel of the service; null without one.
json carouselOf(const si::Ait::Application& application) {
    for (const si::Ait::Transport& transport : application.transports) {
        if (transport.protocolId == kProtocolCarousel && transport.componentTag) {
            return {{"componentTag", *transport.componentTag}, {"path", safeText(application.initialPath)}};
        }
    }
    return nullptr;
}

/// Its entry points, the best transport first.
json entriesOf(const si::Ait::Application& application, const si::Triplet& service) {
    json entries = json::array();
    for (const si::Ait::Transport& transport : application.transports) {
        if (transport.protocolId == kProtocolCarousel && transport.componentTag) {
            entries.push_back(safeText(carouselUrl(service, *transport.componentTag, application.initialPath)));
        } else if (!transport.urlBase.empty()) {
            entries.push_back(safeText(transport.urlBase + application.initialPath));
        }
    }
    return entries;
}

}  // namespace

json ApplicationTable::applicationValue(const si::Ait::Application& application) const {
    json protocols = json::array();
    for (const si::Ait::Transport& transport : application.transports) {
        protocols.push_back(transport.protocolId);
    }
    json boundaries = json::array();
    for (const std::string& boundary : application.boundaries) {
        boundaries.push_back(safeText(boundary));
    }
    const std::string name = application.names.empty() ? "" : application.names.front().text;
    const std::string url = application.urlBase().empty() ? "" : application.url();
    return {{"organisation", application.organisationId},
            {"application", application.applicationId},
            {"control", application.controlCode},
            {"name", safeText(name)},
            {"names", namesOf(application)},
            {"url", safeText(url)},
            {"protocols", protocols},
            {"carousel", carouselOf(application)},
            {"entries", entriesOf(application, service)},
            {"priority", application.priority},
            {"visibility", application.visibility},
            {"serviceBound", application.isServiceBound},
            {"profiles", profilesOf(application)},
            {"boundaries", boundaries},
            {"usage", orNull(application.usage)}};
}

void ApplicationTable::setPmt(const si::Pmt& pmt) {
    isKnown = true;
    isSignalled = !si::hbbtvAitPids(pmt).empty();
    if (!isSignalled) {
        version.reset();
        sections = {};
    }
}

/// What a replay gave of another version was stored at an earlier visit.
void ApplicationTable::hear(std::uint8_t newVersion) {
    const bool isFirst = !version;
    version = newVersion;
    isSignalled = true;
    if (isFirst && !sections.isEmpty() && sections.sections().begin()->second.version != newVersion) {
        sections = {};
    }
}

void ApplicationTable::add(si::Bytes section, std::string& error) {
    if (section.size == 0) {
        return;
    }
    const std::optional<si::Ait> ait = si::parseAit(section, error);
    const bool isOurs = ait && ait->applicationType == si::kApplicationTypeHbbTv && !ait->testApplication;
    if (isOurs && (!version || *version == ait->version)) {
        sections.add(*ait);
    }
}

json ApplicationTable::value() const {
    json list = json::array();
    for (const auto& [number, ait] : sections.sections()) {
        for (const si::Ait::Application& application : ait.applications) {
            list.push_back(applicationValue(application));
        }
    }
    return {{"known", isKnown},
            {"signalled", isSignalled},
            {"complete", isSignalled && sections.isWhole()},
            {"list", isSignalled ? std::move(list) : json::array()}};
}

bool ApplicationTable::takeNews() {
    if (!isKnown) {
        return false;
    }
    json now = value();
    const bool isOther = now != told;
    told = std::move(now);
    return isOther;
}

}  // namespace tvbrowser
