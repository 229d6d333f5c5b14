// The engine's view: loads, responses, messages.
#include "page_view.h"

#include <utility>

#include "main_loop.h"
#include "messages.h"
#include "user_style.h"

namespace tvbrowser {

namespace {

constexpr guint kFirstError = 400;  ///< of HTTP's status codes

WebKitWebView* viewOf(const PageContext& context, HeadlessView* headless, WebKitWebView* sibling) {
    WebKitWebViewBackend* const backend = webkit_web_view_backend_new(
        headless->backend(), [](gpointer data) { delete static_cast<HeadlessView*>(data); }, headless);
    const gpointer made = sibling == nullptr ? g_object_new(WEBKIT_TYPE_WEB_VIEW, "backend", backend, "web-context",
                                                            context.web(), "settings", context.engine(), nullptr)
                                             : g_object_new(WEBKIT_TYPE_WEB_VIEW, "backend", backend, "related-view",
                                                            sibling, "settings", context.engine(), nullptr);
    return WEBKIT_WEB_VIEW(made);
}

void addUserStyle(WebKitWebView* view) {
    WebKitUserStyleSheet* const sheet = webkit_user_style_sheet_new(kUserStyle, WEBKIT_USER_CONTENT_INJECT_ALL_FRAMES,
                                                                    WEBKIT_USER_STYLE_LEVEL_USER, nullptr, nullptr);
    webkit_user_content_manager_add_style_sheet(webkit_web_view_get_user_content_manager(view), sheet);
    webkit_user_style_sheet_unref(sheet);
}

/// Documents of HbbTV's own type (TS 102 796, clause 7.3.1.1). The engine shows them as it shows all XML, but says that
/// it does not support them.
bool isHbbTvType(const char* type) {
    return type != nullptr && g_ascii_strcasecmp(type, "application/vnd.hbbtv.xhtml+xml") == 0;
}

/// An AIT in place of a page (TS 102 809, clause 5.4).
bool isXmlAitType(const char* type) {
    return type != nullptr && g_ascii_strcasecmp(type, "application/vnd.dvb.ait+xml") == 0;
}

std::string withoutFragment(const std::string& url) {
    return url.substr(0, url.find('#'));
}

}  // namespace

PageView::PageView(const PageContext& context, Screen& screen, const PageView* sibling, PageViewEvents newEvents)
    : events(std::move(newEvents)),
      headless(new HeadlessView(screen)),
      view(viewOf(context, headless, sibling == nullptr || sibling->hasEnded ? nullptr : sibling->view)) {
    WebKitColor transparent{0, 0, 0, 0};
    webkit_web_view_set_background_color(view, &transparent);
    addUserStyle(view);
    loads = std::make_unique<LoadWatch>(view, [this](const nlohmann::json& load) { tell("load", load); });
    g_signal_connect(view, "load-changed", G_CALLBACK(onLoadChanged), this);
    g_signal_connect(view, "load-failed", G_CALLBACK(onLoadFailed), this);
    g_signal_connect(view, "decide-policy", G_CALLBACK(onPolicy), this);
    g_signal_connect(view, "user-message-received", G_CALLBACK(onMessage), this);
    g_signal_connect(view, "web-process-terminated", G_CALLBACK(onTerminated), this);
    g_signal_connect(context.web(), "download-started", G_CALLBACK(onDownload), this);
}

PageView::~PageView() {
    leave();
    g_signal_handlers_disconnect_by_data(view, this);
    g_signal_handlers_disconnect_by_data(webkit_web_view_get_context(view), this);
    g_object_unref(view);
    g_object_unref(reading);
}

void PageView::leave() {
    isLeaving = true;
    g_cancellable_cancel(reading);
    headless->leaveScreen();
    loads.reset();
}

void PageView::load(const std::string& url, const std::string& firstScript) {
    setFirstScript(firstScript);
    isStarting = true;
    webkit_web_view_load_uri(view, url.c_str());
}

void PageView::loadNothing() {
    isStarting = true;
    webkit_web_view_load_uri(view, "about:blank");
}

void PageView::setFirstScript(const std::string& firstScript) {
    WebKitUserContentManager* const content = webkit_web_view_get_user_content_manager(view);
    webkit_user_content_manager_remove_all_scripts(content);
    WebKitUserScript* const script =
        webkit_user_script_new(firstScript.c_str(), WEBKIT_USER_CONTENT_INJECT_ALL_FRAMES,
                               WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START, nullptr, nullptr);
    webkit_user_content_manager_add_script(content, script);
    webkit_user_script_unref(script);
}

void PageView::tell(const std::string& name, const nlohmann::json& value) {
    webkit_web_view_send_message_to_page(
        view,
        webkit_user_message_new(kEventMessage, g_variant_new(kParametersType, name.c_str(), value.dump().c_str())),
        nullptr, nullptr, nullptr);
}

void PageView::onLoadChanged(WebKitWebView*, WebKitLoadEvent event, PageView* self) {
    if (self->isLeaving) {
        return;
    }
    if (event != WEBKIT_LOAD_FINISHED) {
        self->onProgress(event);
    } else if (std::exchange(self->isXmlAit, false)) {
        self->readXmlAit();
    }
}

/// These events are the page's, never those of a frame.
void PageView::onProgress(WebKitLoadEvent event) {
    if (event != WEBKIT_LOAD_COMMITTED) {
        coming = asked;
        return;
    }
    coming.clear();
    if (isStarting) {
        isStarting = false;
        if (!isXmlAit) {
            events.onLoaded();
        }
    } else if (const std::string url = webkit_web_view_get_uri(view); !events.mayGoOnTo(url)) {
        leaveFor(url);
    }
}

/// The engine shows it as it shows all XML, and nobody sees that: no application is visible before its page asks.
void PageView::readXmlAit() {
    webkit_web_resource_get_data(webkit_web_view_get_main_resource(view), reading, onXmlAitRead, this);
}

void PageView::onXmlAitRead(GObject* resource, GAsyncResult* result, gpointer data) {
    gsize size = 0;
    GError* error = nullptr;
    guchar* const bytes = webkit_web_resource_get_data_finish(WEBKIT_WEB_RESOURCE(resource), result, &size, &error);
    const std::string document(reinterpret_cast<const char*>(bytes), bytes == nullptr ? 0 : size);
    const std::string problem = error == nullptr ? "" : error->message;
    const bool isCancelled = g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED) != FALSE;
    g_clear_error(&error);
    g_free(bytes);
    if (isCancelled) {
        return;
    }
    const PageViewEvents& events = static_cast<PageView*>(data)->events;
    if (problem.empty()) {
        events.onXmlAit(document);
    } else {
        events.onFailed(problem);
    }
}

void PageView::leaveFor(const std::string& url) {
    postToMainLoop([onLeft = events.onLeft, url] { onLeft(url); });
}

gboolean PageView::onLoadFailed(WebKitWebView*, WebKitLoadEvent, const char*, GError* error, PageView* self) {
    // A refused response has been told. A page cancels what it begins anew.
    const bool interrupted =
        g_error_matches(error, WEBKIT_POLICY_ERROR, WEBKIT_POLICY_ERROR_FRAME_LOAD_INTERRUPTED_BY_POLICY_CHANGE) != 0 ||
        g_error_matches(error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED) != 0;
    if (!interrupted && !self->isLeaving) {
        self->events.onFailed(error->message);
    }
    return TRUE;  // no error page of the engine
}

gboolean PageView::onPolicy(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                            PageView* self) {
    if (self->isLeaving) {
        webkit_policy_decision_ignore(decision);
    } else if (type == WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION) {
        WebKitNavigationAction* const action =
            webkit_navigation_policy_decision_get_navigation_action(WEBKIT_NAVIGATION_POLICY_DECISION(decision));
        self->asked = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
        return FALSE;
    } else if (type == WEBKIT_POLICY_DECISION_TYPE_RESPONSE) {
        self->onResponse(WEBKIT_RESPONSE_POLICY_DECISION(decision));
    } else {
        return FALSE;
    }
    return TRUE;
}

/// The engine does not say whether a response is the page's or a frame's. The page's has the URL that was asked for
/// last before its load began. Before the first page is there, it has no frames.
bool PageView::isOfPage(const std::string& url) const {
    return isStarting || (!coming.empty() && withoutFragment(coming) == withoutFragment(url));
}

void PageView::onResponse(WebKitResponsePolicyDecision* response) {
    WebKitPolicyDecision* const decision = WEBKIT_POLICY_DECISION(response);
    WebKitURIResponse* const got = webkit_response_policy_decision_get_response(response);
    const std::string url = webkit_uri_response_get_uri(got);
    const std::string problem = isOfPage(url) ? problemOf(response) : "";
    if (!isOfPage(url)) {
        webkit_policy_decision_use(decision);
    } else if (!problem.empty()) {
        webkit_policy_decision_ignore(decision);
        events.onFailed(problem);
    } else if (!isStarting && !events.mayGoOnTo(url)) {
        webkit_policy_decision_ignore(decision);
        leaveFor(url);
    } else {
        isXmlAit = isStarting && isXmlAitType(webkit_uri_response_get_mime_type(got));
        webkit_policy_decision_use(decision);
    }
}

/// Why a response is no page; empty if it is one. Pages that an application goes on to may be those of an error.
std::string PageView::problemOf(WebKitResponsePolicyDecision* response) const {
    constexpr guint kNoContent = 204;
    WebKitURIResponse* const got = webkit_response_policy_decision_get_response(response);
    const guint status = webkit_uri_response_get_status_code(got);
    if (status == kNoContent || (isStarting && status >= kFirstError)) {
        return "HTTP status " + std::to_string(status);
    }
    const char* const type = webkit_uri_response_get_mime_type(got);
    return isHbbTvType(type) || (isStarting && isXmlAitType(type)) ||
                   webkit_response_policy_decision_is_mime_type_supported(response) != FALSE
               ? ""
               : std::string("a document of type ") + (type == nullptr ? "unknown" : type) + " is no page";
}

void PageView::onDownload(WebKitWebContext*, WebKitDownload* download, PageView* self) {
    if (webkit_download_get_web_view(download) == self->view) {
        webkit_download_cancel(download);
        self->events.onLog("engine", "a television stores no files");
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
    self->onMessageOf(webkit_user_message_get_name(message), name, value);
    return TRUE;
}

/// The web process may be in any state; a wrong message of it changes nothing here.
void PageView::onMessageOf(const char* message, const char* name, const char* value) {
    if (g_strcmp0(message, kLogMessage) == 0) {
        events.onLog(name, value);
        return;
    }
    if (isLeaving) {
        return;
    }
    try {
        events.onCall(name, nlohmann::json::parse(value));
    } catch (const nlohmann::json::exception& error) {
        events.onLog("engine", std::string("a wrong call of ") + name + ": " + error.what());
    }
}

void PageView::onTerminated(WebKitWebView*, WebKitWebProcessTerminationReason, PageView* self) {
    self->isStarting = false;
    self->hasEnded = true;
    if (!self->isLeaving) {
        // The engine is in the middle of it, and what is told may load a page.
        postToMainLoop(self->events.onProcessDied);
    }
}

}  // namespace tvbrowser
