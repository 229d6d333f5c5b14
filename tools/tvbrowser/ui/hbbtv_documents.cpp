// HbbTV documents by way of downloads, because only a download gives the bytes of a response that has begun.
#include "hbbtv_documents.h"

#include <gio/gio.h>
#include <glib/gstdio.h>

#include <memory>

namespace tvbrowser {

namespace {

constexpr const char* kHbbTvType = "application/vnd.hbbtv.xhtml+xml";
constexpr const char* kShownAs = "application/xhtml+xml";

using OnFailed = std::function<void(const std::string&)>;

/// One document on its way.
struct Document {
    WebKitWebView* view = nullptr;
    std::string file;
    bool failed = false;
    OnFailed onFailed;
};

gboolean onDestination(WebKitDownload* download, const char*, Document* document) {
    char* name = nullptr;
    const int descriptor = g_file_open_tmp("tvbrowser-XXXXXX.xhtml", &name, nullptr);
    if (descriptor < 0) {
        webkit_download_cancel(download);
        return TRUE;
    }
    g_close(descriptor, nullptr);
    document->file = name;
    char* const url = g_filename_to_uri(name, nullptr, nullptr);
    webkit_download_set_allow_overwrite(download, TRUE);
    webkit_download_set_destination(download, url);
    g_free(url);
    g_free(name);
    return TRUE;
}

void onDownloadFailed(WebKitDownload*, GError* error, Document* document) {
    document->failed = true;
    document->onFailed(error->message);
}

void show(WebKitDownload* download, const Document& document) {
    char* bytes = nullptr;
    gsize size = 0;
    if (g_file_get_contents(document.file.c_str(), &bytes, &size, nullptr) == FALSE) {
        document.onFailed("the document could not be stored");
        return;
    }
    GBytes* const content = g_bytes_new_take(bytes, size);
    webkit_web_view_load_bytes(document.view, content, kShownAs, nullptr,
                               webkit_uri_response_get_uri(webkit_download_get_response(download)));
    g_bytes_unref(content);
}

void onFinished(WebKitDownload* download, Document* document) {
    const std::unique_ptr<Document> last(document);
    if (!document->failed) {
        show(download, *document);
    }
    g_unlink(document->file.c_str());
    g_object_unref(download);
}

void onStarted(WebKitWebContext*, WebKitDownload* download, OnFailed* onFailed) {
    auto* const document = new Document;
    document->view = webkit_download_get_web_view(download);
    document->onFailed = *onFailed;
    g_object_ref(download);
    g_signal_connect(download, "decide-destination", G_CALLBACK(onDestination), document);
    g_signal_connect(download, "failed", G_CALLBACK(onDownloadFailed), document);
    g_signal_connect(download, "finished", G_CALLBACK(onFinished), document);
}

}  // namespace

bool isHbbTvDocument(WebKitURIResponse* response) {
    return g_strcmp0(webkit_uri_response_get_mime_type(response), kHbbTvType) == 0;
}

void showDownloadsAsDocuments(WebKitWebContext* context, const OnFailed& onFailed) {
    g_signal_connect_data(
        context, "download-started", G_CALLBACK(onStarted), new OnFailed(onFailed),
        [](gpointer data, GClosure*) { delete static_cast<OnFailed*>(data); }, GConnectFlags(0));
}

}  // namespace tvbrowser
