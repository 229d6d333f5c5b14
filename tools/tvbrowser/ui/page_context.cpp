// The engine's context and settings.
#include "page_context.h"

#include <cstdlib>
#include <fstream>
#include <random>

#include "messages.h"

namespace tvbrowser {

namespace {

WebKitSettings* settingsWith(const std::string& userAgent) {
    WebKitSettings* const settings = webkit_settings_new();
    webkit_settings_set_user_agent(settings, userAgent.c_str());
    // A set's application plays without a hand on the remote control.
    webkit_settings_set_media_playback_requires_user_gesture(settings, FALSE);
    webkit_settings_set_allow_modal_dialogs(settings, FALSE);
    webkit_settings_set_enable_developer_extras(settings, TRUE);
    // Arrow keys that a page does not take move the focus.
    webkit_settings_set_enable_spatial_navigation(settings, TRUE);
    // A page that comes back from this cache runs no first script, and would know the broadcast of before.
    webkit_settings_set_enable_page_cache(settings, FALSE);
    return settings;
}

/// Without a sound card, a sink for one would hold a video up at its start. What PulseAudio does is left to it.
void ruleSoundCardOut() {
    std::ifstream cards("/proc/asound/cards");
    unsigned int card = 0;
    if (!(cards >> card)) {
        setenv("GST_PLUGIN_FEATURE_RANK", "alsasink:NONE,jackaudiosink:NONE,openalsink:NONE,osssink:NONE,oss4sink:NONE",
               0);
    }
}

/// What no page can guess.
std::string newKey() {
    constexpr int kNumbers = 4;
    std::random_device device;
    std::string key;
    for (int count = 0; count < kNumbers; ++count) {
        key += std::to_string(device()) + ".";
    }
    return key;
}

WebKitWebContext* contextWith(const PageSettings& settings, const std::string& key) {
    ruleSoundCardOut();  // the web processes are this one's children
    // Not an ephemeral context: the engine keeps the console of such pages to itself.
    WebKitWebsiteDataManager* const data =
        webkit_website_data_manager_new("base-data-directory", settings.dataFolder.c_str(), "base-cache-directory",
                                        settings.dataFolder.c_str(), nullptr);
    WebKitWebContext* const context = webkit_web_context_new_with_website_data_manager(data);
    g_object_unref(data);
    webkit_web_context_set_web_extensions_directory(context, settings.extensionFolder.c_str());
    webkit_web_context_set_web_extensions_initialization_user_data(
        context,
        g_variant_new(kExtensionDataType, settings.libraryPath.c_str(), settings.deviceSecret.c_str(), key.c_str()));
    return context;
}

}  // namespace

PageContext::PageContext(const PageSettings& settings)
    : nativesKey(newKey()),
      context(contextWith(settings, nativesKey)),
      engineSettings(settingsWith(settings.userAgent)) {}

PageContext::~PageContext() {
    g_object_unref(engineSettings);
    g_object_unref(context);
}

}  // namespace tvbrowser
