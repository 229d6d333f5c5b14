// LoadWatch: how the loads of a page end: of documents, images, media and all else. The engine tells pages only a part
// of it.
// Threads: the main one.
// Blocks:  never.
// Fails:   never. Loads of a web process that has ended do not end.
#pragma once

#include <wpe/webkit.h>

#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

namespace tvbrowser {

class LoadWatch {
public:
    /// Takes {url, result: "whole", "failed" or "cancelled", status, mimeType}. The URL is the first, before
    /// redirections; the status is 0 and the type empty if the load ended before an answer was taken.
    using Tell = std::function<void(const nlohmann::json& load)>;

    LoadWatch(WebKitWebView* newView, Tell newTell);
    LoadWatch(const LoadWatch&) = delete;
    LoadWatch& operator=(const LoadWatch&) = delete;
    ~LoadWatch();

private:
    struct Load {
        std::string url;
        std::string result;
    };

    static void onStarted(WebKitWebView*, WebKitWebResource* resource, WebKitURIRequest*, LoadWatch* self);
    static void onFailed(WebKitWebResource* resource, GError* error, LoadWatch* self);
    static void onFinished(WebKitWebResource* resource, LoadWatch* self);
    void tellEnd(WebKitWebResource* resource, const Load& load) const;

    WebKitWebView* const view;
    const Tell tell;
    std::map<WebKitWebResource*, Load> loads;  // each is referenced
};

}  // namespace tvbrowser
