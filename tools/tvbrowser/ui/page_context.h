// PageContext: what all pages of the engine share: its extension, what pages store, the engine's settings.
// Threads: the main one.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <wpe/webkit.h>

#include <string>

namespace tvbrowser {

struct PageSettings {
    std::string extensionFolder;
    std::string libraryPath;  ///< for the extension
    std::string dataFolder;   ///< for what pages store, and for the cache
    std::string userAgent;
    std::string deviceSecret;  ///< nobody else has it; what identifies the set to pages is made of it
};

class PageContext {
public:
    explicit PageContext(const PageSettings& settings);
    PageContext(const PageContext&) = delete;
    PageContext& operator=(const PageContext&) = delete;
    ~PageContext();

    WebKitWebContext* web() const { return context; }
    WebKitSettings* engine() const { return engineSettings; }
    /// By which the natives know the first script from a page's own.
    const std::string& key() const { return nativesKey; }

private:
    const std::string nativesKey;
    WebKitWebContext* context;
    WebKitSettings* engineSettings;
};

}  // namespace tvbrowser
