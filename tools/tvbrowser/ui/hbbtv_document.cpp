// HbbTV documents by way of downloads, because only a download gives the bytes of a response that has begun.
#include "hbbtv_document.h"

#include <gio/gio.h>
#include <glib/gstdio.h>

#include <utility>

namespace tvbrowser {

namespace {

constexpr const char* kHbbTvType = "application/vnd.hbbtv.xhtml+xml";

}  // namespace

bool isHbbTvDocument(WebKitURIResponse* response) {
    return g_strcmp0(webkit_uri_response_get_mime_type(response), kHbbTvType) == 0;
}

void showHbbTvDocument(WebKitWebView* view, GBytes* document, const std::string& url) {
    webkit_web_view_load_bytes(view, document, "application/xhtml+xml", nullptr, url.c_str());
}

HbbTvDocument::HbbTvDocument(WebKitDownload* newDownload, OnFetched newOnFetched)
    : download(WEBKIT_DOWNLOAD(g_object_ref(newDownload))), onFetched(std::move(newOnFetched)) {
    g_signal_connect(download, "decide-destination", G_CALLBACK(onDestination), this);
    g_signal_connect(download, "failed", G_CALLBACK(onFailed), this);
    g_signal_connect(download, "finished", G_CALLBACK(onFinished), this);
}

HbbTvDocument::~HbbTvDocument() {
    g_signal_handlers_disconnect_by_data(download, this);
    if (!isOver) {
        webkit_download_cancel(download);
    }
    if (!file.empty()) {
        g_unlink(file.c_str());
    }
    g_object_unref(download);
}

gboolean HbbTvDocument::onDestination(WebKitDownload*, const char*, HbbTvDocument* self) {
    char* name = nullptr;
    const int descriptor = g_file_open_tmp("tvbrowser-XXXXXX.xhtml", &name, nullptr);
    if (descriptor < 0) {
        self->problem = "the document could not be stored";
        webkit_download_cancel(self->download);
        return TRUE;
    }
    g_close(descriptor, nullptr);
    self->file = name;
    char* const url = g_filename_to_uri(name, nullptr, nullptr);
    webkit_download_set_allow_overwrite(self->download, TRUE);
    webkit_download_set_destination(self->download, url);
    g_free(url);
    g_free(name);
    return TRUE;
}

void HbbTvDocument::onFailed(WebKitDownload*, GError* error, HbbTvDocument* self) {
    if (self->problem.empty()) {
        self->problem = error->message;
    }
}

void HbbTvDocument::onFinished(WebKitDownload*, HbbTvDocument* self) {
    self->isOver = true;
    char* bytes = nullptr;
    gsize size = 0;
    if (self->problem.empty() && g_file_get_contents(self->file.c_str(), &bytes, &size, nullptr) == FALSE) {
        self->problem = "the document could not be stored";
    }
    GBytes* const document = self->problem.empty() ? g_bytes_new_take(bytes, size) : nullptr;
    const OnFetched told = self->onFetched;  // it may delete this
    told(document, std::string(self->problem));
    if (document != nullptr) {
        g_bytes_unref(document);
    }
}

}  // namespace tvbrowser
