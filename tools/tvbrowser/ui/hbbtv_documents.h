// Documents of HbbTV's own type, application/vnd.hbbtv.xhtml+xml (TS 102 796, clause 7.3.1.1), which the engine would
// offer for saving. They are fetched by the engine, once, and shown as XHTML under their own URL.
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

/// From now on, what the context downloads is shown in the view that it is for. `onFailed` gets the reason.
void showDownloadsAsDocuments(WebKitWebContext* context, const std::function<void(const std::string&)>& onFailed);

}  // namespace tvbrowser
