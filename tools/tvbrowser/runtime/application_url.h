// URLs of applications: those that name an application of the current AIT, and which URLs belong to an application.
// Threads: any.
// Blocks:  never.
// Fails:   no value, and `error` says what is wrong.
#pragma once

#include "application.h"

namespace tvbrowser {

/// dvb://current.ait/ORG.APP[?query][#fragment], ORG and APP hexadecimal (TS 102 796, clause 9.2).
struct CurrentAitUrl {
    ApplicationId id;
    std::string query;     ///< with its question mark, or empty
    std::string fragment;  ///< with its hash, or empty
};

/// Whether the text is a `dvb:` URL, valid or not.
bool isDvbUrl(const std::string& text);
/// Whether the text is a complete URL with the scheme http or https.
bool isHttpUrl(const std::string& text);
std::optional<CurrentAitUrl> parseCurrentAitUrl(const std::string& text, std::string& error);

/// The application's URL with query and fragment. A query is added to the one that the URL has; a fragment replaces it.
std::string urlWith(const std::string& url, const std::string& query, const std::string& fragment);

/// Whether two URLs differ in query and fragment at most.
bool isSameDocument(const std::string& one, const std::string& other);

/// Scheme, host and port, for example "https://a.example:443"; no value for a text that is no URL with a scheme.
std::optional<std::string> originOf(const std::string& url);

/// Whether a URL is inside of the application's boundary: it has the origin of the entry point, or begins with one of
/// the boundaries.
bool isWithinBoundary(const std::string& url, const RunningApplication& application);

}  // namespace tvbrowser
