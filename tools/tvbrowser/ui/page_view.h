// PageView: the engine's view of one page at a time, with the first script that gives a page its broadcast objects.
// Threads: the main one.
// Blocks:  never.
// Fails:   a page that cannot be loaded is told by onFailed.
#pragma once

#include <wpe/webkit.h>

#include <functional>
#include <nlohmann/json.hpp>
#include <string>

#include "headless_view.h"

namespace tvbrowser {

struct PageViewSettings {
    std::string extensionFolder;
    std::string libraryPath;  ///< for the extension
    std::string dataFolder;   ///< for what pages store, and for the cache
    std::string softwareVersion;
};

/// What happens to a page.
struct PageViewEvents {
    std::function<void()> onLoaded;                    ///< once for each load()
    std::function<void(const std::string&)> onFailed;  ///< once for each load(), with the reason
    std::function<void()> onProcessDied;               ///< the page is gone
    std::function<void(const std::string& name, const nlohmann::json& call)> onCall;
    std::function<void(const std::string& subject, const std::string& text)> onLog;
};

class PageView {
public:
    PageView(HeadlessView& headless, const PageViewSettings& settings, PageViewEvents newEvents);
    PageView(const PageView&) = delete;
    PageView& operator=(const PageView&) = delete;
    ~PageView();

    /// Loads a page. `firstScript` runs in it, and in each page that it goes on to, before the page's own scripts.
    void load(const std::string& url, const std::string& firstScript);
    /// Replaces the first script of the pages that come next.
    void setFirstScript(const std::string& firstScript);
    /// Shows nothing.
    void unload();
    /// Tells the page's objects of an event.
    void tell(const std::string& name, const nlohmann::json& value);

private:
    static void onLoadChanged(WebKitWebView*, WebKitLoadEvent event, PageView* self);
    static gboolean onLoadFailed(WebKitWebView*, WebKitLoadEvent, const char* url, GError* error, PageView* self);
    static gboolean onPolicy(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                             PageView* self);
    static gboolean onMessage(WebKitWebView*, WebKitUserMessage* message, PageView* self);
    static void onTerminated(WebKitWebView*, WebKitWebProcessTerminationReason reason, PageView* self);
    void onResponse(WebKitResponsePolicyDecision* decision);
    void succeed();
    void fail(const std::string& reason);

    const PageViewEvents events;
    WebKitWebView* view = nullptr;
    bool starting = false;  ///< a load() has neither succeeded nor failed
};

}  // namespace tvbrowser
