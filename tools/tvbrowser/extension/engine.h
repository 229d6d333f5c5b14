// The engine's headers for its web process. WPE WebKit and WebKitGTK 6.0 have the same interface under two names.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

#ifdef TVBROWSER_WEBKITGTK
#include <webkit/webkit-web-process-extension.h>
using WebKitWebExtension = WebKitWebProcessExtension;
#define TVBROWSER_EXTENSION_ENTRY webkit_web_process_extension_initialize_with_user_data
#else
#include <wpe/webkit-web-extension.h>
#define TVBROWSER_EXTENSION_ENTRY webkit_web_extension_initialize_with_user_data
#endif
