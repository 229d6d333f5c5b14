// HbbTvDocument: a document of HbbTV's own type, application/vnd.hbbtv.xhtml+xml (TS 102 796, clause 7.3.1.1), which
// the engine would offer for saving. It is fetched by the engine, once, to be shown as XHTML under its own URL.
// Threads: the main one.
// Blocks:  never.
// Fails:   a document that cannot be fetched is told by the callback.
#pragma once

#include <wpe/webkit.h>

#include <functional>
#include <string>

namespace tvbrowser {

/// Whether the response is a document of HbbTV's own type.
bool isHbbTvDocument(WebKitURIResponse* response);

/// Shows a fetched document.
void showHbbTvDocument(WebKitWebView* view, GBytes* document, const std::string& url);

class HbbTvDocument {
public:
    /// Gets the bytes of the whole document, or nullptr and the reason why there are none.
    using OnFetched = std::function<void(GBytes* document, const std::string& reason)>;

    /// Fetches what the engine has begun to download. `newOnFetched` may delete this.
    HbbTvDocument(WebKitDownload* newDownload, OnFetched newOnFetched);
    HbbTvDocument(const HbbTvDocument&) = delete;
    HbbTvDocument& operator=(const HbbTvDocument&) = delete;
    /// Cancels what has not been fetched.
    ~HbbTvDocument();

private:
    static gboolean onDestination(WebKitDownload*, const char*, HbbTvDocument* self);
    static void onFailed(WebKitDownload*, GError* error, HbbTvDocument* self);
    static void onFinished(WebKitDownload*, HbbTvDocument* self);

    WebKitDownload* const download;
    const OnFetched onFetched;
    std::string file;
    std::string problem;
    bool isOver = false;
};

}  // namespace tvbrowser
