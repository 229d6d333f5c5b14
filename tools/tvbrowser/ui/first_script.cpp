// Joins the script of the page's objects with its setup.
#include "first_script.h"

#include "dom_script.h"
#include "messages.h"

namespace tvbrowser {

namespace {

nlohmann::json setupOf(const RunningApplication& application, const SetDescription& set) {
    nlohmann::json described = stateOf(application);
    described["organisation"] = application.id ? nlohmann::json(application.id->organisation) : nlohmann::json();
    described["application"] = application.id ? nlohmann::json(application.id->application) : nlohmann::json();
    described["name"] = application.name;
    described["url"] = application.url;
    described["boundaries"] = application.boundaries;
    described["serviceBound"] = application.isServiceBound;
    return {
        {"application", described},
        {"player", set.picture},
        {"capabilities", {{"width", set.width}, {"height", set.height}, {"version", "1.6.1"}, {"drm", set.caSystems}}},
        {"configuration",
         {{"preferredAudioLanguage", set.language},
          {"preferredSubtitleLanguage", set.language},
          {"preferredUILanguage", set.language},
          {"countryId", set.country},
          {"vendorName", set.vendorName},
          {"modelName", set.modelName},
          {"familyName", set.familyName},
          {"softwareVersion", set.softwareVersion},
          {"hardwareVersion", set.hardwareVersion}}}};
}

/// JSON is no script in two characters, which end a line there.
std::string asScript(const nlohmann::json& value) {
    return value.dump(-1, ' ', true, nlohmann::json::error_handler_t::replace);
}

}  // namespace

nlohmann::json stateOf(const RunningApplication& application) {
    return {{"broadcastRelated", application.isBroadcastRelated}, {"visible", application.isVisible}};
}

std::string firstScript(const RunningApplication& application, const SetDescription& set, const std::string& key) {
    return std::string(kFirstScript) + "(" + asScript(kNativesName) + ", " + asScript(key) + ", " +
           std::to_string(application.instance) + ", " + asScript(setupOf(application, set)) + ", " + kDomScript + ");";
}

}  // namespace tvbrowser
