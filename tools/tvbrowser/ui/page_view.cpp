// The engine's view: settings, loads, messages.
#include "page_view.h"

#include <utility>

#include "hbbtv_documents.h"
#include "main_loop.h"
#include "messages.h"

namespace tvbrowser {

namespace {

constexpr const char* kEmptyPage = "about:blank";
constexpr guint kFirstError = 400;  ///< of HTTP's status codes

/// The user agent of HbbTV (TS 102 796, clause 7.3.2.4). What names a product or a maker is empty.
std::string userAgent(const std::string& softwareVersion) {
    return "Mozilla/5.0 (Linux) AppleWebKit/605.1.15 (KHTML, like Gecko) HbbTV/1.6.1 (; ; tvbrowser; " +
           softwareVersion + "; ; ) tvbrowser/" + softwareVersion;
}

WebKitSettings* engineSettings(const std::string& softwareVersion) {
    WebKitSettings* const settings = webkit_settings_new();
    webkit_settings_set_user_agent(settings, userAgent(softwareVersion).c_str());
    // A set's application plays without a hand on the remote control.
    webkit_settings_set_media_playback_requires_user_gesture(settings, FALSE);
    webkit_settings_set_allow_modal_dialogs(settings, FALSE);
    webkit_settings_set_enable_developer_extras(settings, TRUE);
    return settings;
}

WebKitWebContext* contextWith(const PageViewSettings& settings) {
    // Not an ephemeral context: the engine keeps the console of such pages to itself.
    WebKitWebsiteDataManager* const data =
        webkit_website_data_manager_new("base-data-directory", settings.dataFolder.c_str(), "base-cache-directory",
                                        settings.dataFolder.c_str(), nullptr);
    WebKitWebContext* const context = webkit_web_context_new_with_website_data_manager(data);
    g_object_unref(data);
    webkit_web_context_set_web_extensions_directory(context, settings.extensionFolder.c_str());
    webkit_web_context_set_web_extensions_initialization_user_data(context,
                                                                   g_variant_new_string(settings.libraryPath.c_str()));
    return context;
}

WebKitWebViewBackend* backendOf(HeadlessView& headless) {
    return webkit_web_view_backend_new(
        headless.backend(), [](gpointer data) { static_cast<HeadlessView*>(data)->end(); }, &headless);
}

}  // namespace

PageView::PageView(HeadlessView& headless, const PageViewSettings& settings, PageViewEvents newEvents)
    : events(std::move(newEvents)) {
    WebKitWebContext* const context = contextWith(settings);
    showDownloadsAsDocuments(context, [this](const std::string& reason) { fail(reason); });
    WebKitSettings* const engine = engineSettings(settings.softwareVersion);
    view = WEBKIT_WEB_VIEW(g_object_new(WEBKIT_TYPE_WEB_VIEW, "backend", backendOf(headless), "web-context", context,
                                        "settings", engine, nullptr));
    g_object_unref(engine);
    g_object_unref(context);
    WebKitColor transparent{0, 0, 0, 0};
    webkit_web_view_set_background_color(view, &transparent);
    g_signal_connect(view, "load-changed", G_CALLBACK(onLoadChanged), this);
    g_signal_connect(view, "load-failed", G_CALLBACK(onLoadFailed), this);
    g_signal_connect(view, "decide-policy", G_CALLBACK(onPolicy), this);
    g_signal_connect(view, "user-message-received", G_CALLBACK(onMessage), this);
    g_signal_connect(view, "web-process-terminated", G_CALLBACK(onTerminated), this);
    unload();  // the web process starts now, so it knows the broadcast before the first application comes
}

PageView::~PageView() {
    g_signal_handlers_disconnect_by_data(view, this);
    g_object_unref(view);
}

void PageView::load(const std::string& url, const std::string& firstScript) {
    setFirstScript(firstScript);
    starting = true;
    webkit_web_view_load_uri(view, url.c_str());
}

void PageView::setFirstScript(const std::string& firstScript) {
    WebKitUserContentManager* const content = webkit_web_view_get_user_content_manager(view);
    webkit_user_content_manager_remove_all_scripts(content);
    WebKitUserScript* const script =
        webkit_user_script_new(firstScript.c_str(), WEBKIT_USER_CONTENT_INJECT_TOP_FRAME,
                               WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START, nullptr, nullptr);
    webkit_user_content_manager_add_script(content, script);
    webkit_user_script_unref(script);
}

void PageView::unload() {
    starting = false;
    webkit_user_content_manager_remove_all_scripts(webkit_web_view_get_user_content_manager(view));
    webkit_web_view_load_uri(view, kEmptyPage);
}

void PageView::tell(const std::string& name, const nlohmann::json& value) {
    webkit_web_view_send_message_to_page(
        view,
        webkit_user_message_new(kEventMessage, g_variant_new(kParametersType, name.c_str(), value.dump().c_str())),
        nullptr, nullptr, nullptr);
}

void PageView::onLoadChanged(WebKitWebView*, WebKitLoadEvent event, PageView* self) {
    // The empty page may still arrive when the next one is asked for already.
    if (event == WEBKIT_LOAD_COMMITTED && g_strcmp0(webkit_web_view_get_uri(self->view), kEmptyPage) != 0) {
        self->succeed();
    }
}

gboolean PageView::onLoadFailed(WebKitWebView*, WebKitLoadEvent, const char*, GError* error, PageView* self) {
    const bool interrupted =
        g_error_matches(error, WEBKIT_POLICY_ERROR, WEBKIT_POLICY_ERROR_FRAME_LOAD_INTERRUPTED_BY_POLICY_CHANGE) != 0 ||
        g_error_matches(error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED) != 0;
    if (!interrupted) {
        self->fail(error->message);
    }
    return TRUE;  // no error page of the engine
}

gboolean PageView::onPolicy(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                            PageView* self) {
    if (type != WEBKIT_POLICY_DECISION_TYPE_RESPONSE) {
        return FALSE;
    }
    self->onResponse(WEBKIT_RESPONSE_POLICY_DECISION(decision));
    return TRUE;
}

void PageView::onResponse(WebKitResponsePolicyDecision* decision) {
    WebKitURIResponse* const response = webkit_response_policy_decision_get_response(decision);
    const guint status = webkit_uri_response_get_status_code(response);
    // Until a start has succeeded, no frame of the new page exists, so the response is the page's own.
    if (starting && status >= kFirstError) {
        webkit_policy_decision_ignore(WEBKIT_POLICY_DECISION(decision));
        fail("HTTP status " + std::to_string(status));
    } else if (isHbbTvDocument(response)) {
        webkit_policy_decision_download(WEBKIT_POLICY_DECISION(decision));
    } else {
        webkit_policy_decision_use(WEBKIT_POLICY_DECISION(decision));
    }
}

gboolean PageView::onMessage(WebKitWebView*, WebKitUserMessage* message, PageView* self) {
    const char* name = nullptr;
    const char* value = nullptr;
    GVariant* const parameters = webkit_user_message_get_parameters(message);
    if (parameters == nullptr || g_variant_is_of_type(parameters, G_VARIANT_TYPE(kParametersType)) == FALSE) {
        return FALSE;
    }
    g_variant_get(parameters, "(&s&s)", &name, &value);
    if (g_strcmp0(webkit_user_message_get_name(message), kLogMessage) == 0) {
        self->events.onLog(name, value);
    } else {
        self->events.onCall(name, nlohmann::json::parse(value, nullptr, false));
    }
    return TRUE;
}

void PageView::onTerminated(WebKitWebView*, WebKitWebProcessTerminationReason, PageView* self) {
    self->starting = false;
    // The engine is in the middle of it, and what is told may load a page.
    postToMainLoop([self] { self->events.onProcessDied(); });
}

void PageView::succeed() {
    if (starting) {
        starting = false;
        events.onLoaded();
    }
}

void PageView::fail(const std::string& reason) {
    if (starting) {
        starting = false;
        events.onFailed(reason);
    }
}

}  // namespace tvbrowser
