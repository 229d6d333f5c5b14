// The engine's resources.
#include "load_watch.h"

#include <utility>

namespace tvbrowser {

LoadWatch::LoadWatch(WebKitWebView* newView, Tell newTell) : view(newView), tell(std::move(newTell)) {
    g_signal_connect(view, "resource-load-started", G_CALLBACK(onStarted), this);
}

LoadWatch::~LoadWatch() {
    g_signal_handlers_disconnect_by_data(view, this);
    for (const auto& [resource, load] : loads) {
        g_signal_handlers_disconnect_by_data(resource, this);
        g_object_unref(resource);
    }
}

void LoadWatch::onStarted(WebKitWebView*, WebKitWebResource* resource, WebKitURIRequest*, LoadWatch* self) {
    self->loads[WEBKIT_WEB_RESOURCE(g_object_ref(resource))] = {webkit_web_resource_get_uri(resource), "whole"};
    g_signal_connect(resource, "failed", G_CALLBACK(onFailed), self);
    g_signal_connect(resource, "finished", G_CALLBACK(onFinished), self);
}

/// The end follows.
void LoadWatch::onFailed(WebKitWebResource* resource, GError* error, LoadWatch* self) {
    const bool isCancelled = g_error_matches(error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED) != 0;
    self->loads[resource].result = isCancelled ? "cancelled" : "failed";
}

void LoadWatch::onFinished(WebKitWebResource* resource, LoadWatch* self) {
    const auto found = self->loads.find(resource);
    if (found == self->loads.end()) {
        return;
    }
    const Load load = found->second;
    self->loads.erase(found);
    g_signal_handlers_disconnect_by_data(resource, self);
    self->tellEnd(resource, load);
    g_object_unref(resource);
}

void LoadWatch::tellEnd(WebKitWebResource* resource, const Load& load) const {
    WebKitURIResponse* const response = webkit_web_resource_get_response(resource);
    const guint status = response == nullptr ? 0 : webkit_uri_response_get_status_code(response);
    const char* const type = response == nullptr ? nullptr : webkit_uri_response_get_mime_type(response);
    // Before it asks for a medium, the engine begins a load that never leaves the process.
    if (load.result == "whole" && status == 0) {
        return;
    }
    tell({{"url", load.url}, {"result", load.result}, {"status", status}, {"mimeType", type == nullptr ? "" : type}});
}

}  // namespace tvbrowser
