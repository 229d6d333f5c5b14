// PageView: the engine's view of one application: its page, and the pages that it goes on to. Each application has a
// view of its own, so that no event, frame or history of another can be taken for its own.
// Threads: the main one.
// Blocks:  never.
// Fails:   a page that cannot be loaded is told by onFailed.
#pragma once

#include <wpe/webkit.h>

#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "headless_view.h"
#include "load_watch.h"
#include "page_context.h"

namespace tvbrowser {

/// What happens to a page. No function may delete the view before it returns.
struct PageViewEvents {
    std::function<void()> onLoaded;                    ///< the first page is there
    std::function<void(const std::string&)> onFailed;  ///< a page cannot be loaded; the reason
    std::function<void(const std::string&)> onXmlAit;  ///< the first document is an XML AIT; its bytes
    std::function<void()> onProcessDied;               ///< the page is gone; told later, from the main loop
    /// Whether the page may go on to the URL of a document.
    std::function<bool(const std::string& url)> mayGoOnTo;
    /// The page wanted to go on to a URL where it may not; told later, from the main loop.
    std::function<void(const std::string& url)> onLeft;
    std::function<void(const std::string& name, const nlohmann::json& call)> onCall;
    std::function<void(const std::string& subject, const std::string& text)> onLog;
};

class PageView {
public:
    /// An empty page. It shares the web process of another, if there is one.
    PageView(const PageContext& context, Screen& screen, const PageView* sibling, PageViewEvents newEvents);
    PageView(const PageView&) = delete;
    PageView& operator=(const PageView&) = delete;
    ~PageView();

    /// Loads the first page. `firstScript` runs in it, and in each page that it goes on to, before the page's own
    /// scripts.
    void load(const std::string& url, const std::string& firstScript);
    /// Replaces the first script of the pages that come next.
    void setFirstScript(const std::string& firstScript);
    /// Starts the web process, which so knows the broadcast before the first application comes.
    void loadNothing();
    /// Tells the page's objects of an event.
    void tell(const std::string& name, const nlohmann::json& value);
    void key(std::uint32_t keysym, std::uint32_t keycode, bool isDown) { headless->key(keysym, keycode, isDown); }
    /// The page ends. Until it is deleted, it is heard by onLog alone, and nothing of it is drawn.
    void leave();
    WebKitWebView* engineView() const { return view; }

private:
    static void onLoadChanged(WebKitWebView*, WebKitLoadEvent event, PageView* self);
    static gboolean onLoadFailed(WebKitWebView*, WebKitLoadEvent, const char* url, GError* error, PageView* self);
    static gboolean onPolicy(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                             PageView* self);
    static gboolean onMessage(WebKitWebView*, WebKitUserMessage* message, PageView* self);
    static void onTerminated(WebKitWebView*, WebKitWebProcessTerminationReason reason, PageView* self);
    static void onDownload(WebKitWebContext*, WebKitDownload* download, PageView* self);
    static void onXmlAitRead(GObject* resource, GAsyncResult* result, gpointer self);
    void onProgress(WebKitLoadEvent event);
    void readXmlAit();
    void leaveFor(const std::string& url);
    bool isOfPage(const std::string& url) const;
    void onResponse(WebKitResponsePolicyDecision* decision);
    std::string problemOf(WebKitResponsePolicyDecision* decision) const;
    void onMessageOf(const char* message, const char* name, const char* value);

    const PageViewEvents events;
    HeadlessView* headless;  ///< the engine's view deletes it
    WebKitWebView* view = nullptr;
    GCancellable* const reading = g_cancellable_new();  ///< of an XML AIT; the view may be gone before it has come
    std::string asked;                                  ///< URL that the page or a frame asked for last
    std::string coming;                                 ///< URL of the page that is on its way
    std::unique_ptr<LoadWatch> loads;
    bool isXmlAit = false;    ///< the document that is coming, or is there
    bool isStarting = false;  ///< the first page neither is there nor has failed
    bool isLeaving = false;
    bool hasEnded = false;  ///< its web process has
};

}  // namespace tvbrowser
