// The engine's requests for files of carousels.
#include "dvb_scheme.h"

#include <libsoup/soup.h>

#include <memory>
#include <utility>

#include "content_type.h"

namespace tvbrowser {

namespace {

constexpr const char* kScheme = "dvb";

/// The bytes stay in the carousel's memory.
GBytes* bytesOf(const std::shared_ptr<const si::CarouselObject>& file) {
    using Kept = std::shared_ptr<const si::CarouselObject>;
    return g_bytes_new_with_free_func(
        file->content.data, file->content.size, [](gpointer kept) { delete static_cast<Kept*>(kept); }, new Kept(file));
}

void send(WebKitURISchemeRequest* request, GBytes* bytes, const std::string& type) {
    constexpr guint kOk = 200;
    GInputStream* const stream = g_memory_input_stream_new_from_bytes(bytes);
    WebKitURISchemeResponse* const response =
        webkit_uri_scheme_response_new(stream, static_cast<gint64>(g_bytes_get_size(bytes)));
    webkit_uri_scheme_response_set_status(response, kOk, nullptr);
    webkit_uri_scheme_response_set_content_type(response, type.c_str());
    SoupMessageHeaders* const headers = soup_message_headers_new(SOUP_MESSAGE_HEADERS_RESPONSE);
    soup_message_headers_append(headers, "Content-Type", type.c_str());  // what scripts see
    webkit_uri_scheme_response_set_http_headers(response, headers);
    webkit_uri_scheme_request_finish_with_response(request, response);
    g_object_unref(response);
    g_object_unref(stream);
}

}  // namespace

DvbScheme::DvbScheme(WebKitWebContext* context, Carousels newCarousels, Log newLog)
    : carousels(std::move(newCarousels)), log(std::move(newLog)) {
    webkit_web_context_register_uri_scheme(context, kScheme, onRequest, this, nullptr);
    WebKitSecurityManager* const security = webkit_web_context_get_security_manager(context);
    // Pages of an HTTPS server may show pictures out of a carousel.
    webkit_security_manager_register_uri_scheme_as_secure(security, kScheme);
    // Without this the engine gives modules and fonts of a carousel to no page at all.
    webkit_security_manager_register_uri_scheme_as_cors_enabled(security, kScheme);
}

void DvbScheme::onRequest(Request request, gpointer self) {
    static_cast<DvbScheme*>(self)->begin(request);
}

void DvbScheme::begin(Request request) {
    std::string error;
    const std::string url = webkit_uri_scheme_request_get_uri(request);
    const std::optional<CarouselPlace> place = parseCarouselUrl(url, error);
    if (!place) {
        fail(request, error);
    } else if (g_strcmp0(webkit_uri_scheme_request_get_http_method(request), "GET") != 0) {
        fail(request, url + ": a carousel has no method but GET");
    } else if (!carousels.mayAsk(webkit_uri_scheme_request_get_web_view(request))) {
        fail(request, url + ": its page has been left");
    } else {
        g_object_ref(request);
        waiting[request] = carousels.ask(
            *place, [this, request, at = *place](const CarouselAnswer& found) { answer(request, at, found); });
    }
}

void DvbScheme::answer(Request request, const CarouselPlace& place, const CarouselAnswer& found) {
    waiting.erase(request);
    if (found.file) {
        GBytes* const bytes = bytesOf(found.file);
        send(request, bytes, contentTypeOf(place.path, found.file->contentType));
        g_bytes_unref(bytes);
    } else {
        fail(request, std::string(webkit_uri_scheme_request_get_uri(request)) + ": " + found.error);
    }
    g_object_unref(request);
}

void DvbScheme::leave(WebKitWebView* view) {
    for (auto each = waiting.begin(); each != waiting.end();) {
        const auto [request, number] = *each;
        if (webkit_uri_scheme_request_get_web_view(request) != view) {
            ++each;
            continue;
        }
        each = waiting.erase(each);
        carousels.cancel(number);
        fail(request, std::string(webkit_uri_scheme_request_get_uri(request)) + ": its page has been left");
        g_object_unref(request);
    }
}

void DvbScheme::fail(Request request, const std::string& why) {
    log("carousel: " + why);
    GError* const error = g_error_new_literal(WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_FAILED, why.c_str());
    webkit_uri_scheme_request_finish_error(request, error);
    g_error_free(error);
}

}  // namespace tvbrowser
