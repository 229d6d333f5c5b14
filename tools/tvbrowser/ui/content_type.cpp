// Types by name. The endings that applications need are listed here, because a set may have no list of its own.
#include "content_type.h"

#include <gio/gio.h>

#include <algorithm>
#include <map>

namespace tvbrowser {

namespace {

constexpr const char* kXhtml = "application/xhtml+xml";

const std::map<std::string, const char*>& knownEndings() {
    static const std::map<std::string, const char*> kKnown{{"html", "text/html"},
                                                           {"htm", "text/html"},
                                                           {"xhtml", kXhtml},
                                                           {"xht", kXhtml},
                                                           {"hbbtv", kXhtml},
                                                           {"css", "text/css"},
                                                           {"js", "text/javascript"},
                                                           {"mjs", "text/javascript"},
                                                           {"json", "application/json"},
                                                           {"xml", "application/xml"},
                                                           {"txt", "text/plain"},
                                                           {"png", "image/png"},
                                                           {"jpg", "image/jpeg"},
                                                           {"jpeg", "image/jpeg"},
                                                           {"gif", "image/gif"},
                                                           {"svg", "image/svg+xml"},
                                                           {"webp", "image/webp"},
                                                           {"mp3", "audio/mpeg"},
                                                           {"m4a", "audio/mp4"},
                                                           {"aac", "audio/aac"},
                                                           {"mp4", "video/mp4"},
                                                           {"m4v", "video/mp4"},
                                                           {"ts", "video/mp2t"},
                                                           {"mpd", "application/dash+xml"},
                                                           {"ttf", "font/ttf"},
                                                           {"otf", "font/otf"},
                                                           {"woff", "font/woff"},
                                                           {"woff2", "font/woff2"},
                                                           {"ttml", "application/ttml+xml"}};
    return kKnown;
}

std::string withSmallLetters(const std::string& text) {
    char* const small = g_ascii_strdown(text.c_str(), static_cast<gssize>(text.size()));
    std::string result = small;
    g_free(small);
    return result;
}

/// A type is a header's value, so nothing else may stand in it.
bool isHeaderValue(const std::string& text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char letter) { return letter >= ' ' && letter <= '~'; });
}

std::string guessed(const std::string& name) {
    char* const type = g_content_type_guess(name.c_str(), nullptr, 0, nullptr);
    char* const mime = g_content_type_get_mime_type(type);
    std::string result = mime == nullptr ? "application/octet-stream" : mime;
    g_free(mime);
    g_free(type);
    return result;
}

}  // namespace

std::string contentTypeOf(const std::string& path, const std::string& declared) {
    if (isHeaderValue(declared)) {
        return declared;
    }
    const std::string name = path.substr(path.rfind('/') + 1);
    const std::size_t dot = name.rfind('.');
    const auto known = knownEndings().find(dot == std::string::npos ? "" : withSmallLetters(name.substr(dot + 1)));
    return known == knownEndings().end() ? guessed(name) : known->second;
}

}  // namespace tvbrowser
