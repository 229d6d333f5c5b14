// The extension that the engine loads into each of its web processes. It connects the objects of pages to a library
// instance of this process, and to the set, which is the UI process.
// Threads: the main one. The broadcast's own threads only post to it.
// Blocks:  never.
// Fails:   without the library, pages get no natives, and a line says why.
#include <unistd.h>

#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "broadcast.h"
#include "device_id.h"
#include "library.h"
#include "main_loop.h"
#include "messages.h"
#include "natives.h"
#include "set_calls.h"

namespace tvbrowser {

namespace {

constexpr unsigned long kBytesOfKibibyte = 1024;

/// Resident memory of this process.
unsigned long residentKibibytes() {
    unsigned long all = 0;
    unsigned long resident = 0;
    std::ifstream("/proc/self/statm") >> all >> resident;
    return resident * static_cast<unsigned long>(sysconf(_SC_PAGESIZE)) / kBytesOfKibibyte;
}

std::string callOf(std::uint64_t instance, const nlohmann::json& argument) {
    return nlohmann::json{{"instance", instance}, {"argument", argument}}.dump(
        -1, ' ', false, nlohmann::json::error_handler_t::replace);
}

class Extension {
public:
    Extension(WebKitWebExtension* extension, const std::string& libraryPath, std::string newDeviceSecret)
        : deviceSecret(std::move(newDeviceSecret)) {
        std::string error;
        const unsigned long before = residentKibibytes();
        const std::optional<Library> library = loadLibrary(libraryPath, error);
        if (!library) {
            g_printerr("tvbrowser: %s\n", error.c_str());
            return;
        }
        broadcast = std::make_unique<Broadcast>(*library, postToMainLoop,
                                                [this](const std::string& name, const nlohmann::json& value) {
                                                    const auto told = pages;  // a listener may end its page
                                                    for (const auto& [id, page] : told) {
                                                        page->tell(name, value);
                                                    }
                                                });
        const unsigned long after = residentKibibytes();
        memory = std::to_string(before) + " KiB before the library, " + std::to_string(after) + " KiB with it";
        g_signal_connect(extension, "page-created", G_CALLBACK(onPage), this);
        g_signal_connect(webkit_script_world_get_default(), "window-object-cleared", G_CALLBACK(onDocument), this);
    }

private:
    static void onPage(WebKitWebExtension*, WebKitWebPage* page, gpointer data) {
        static_cast<Extension*>(data)->addPage(page);
    }
    static void onDocument(WebKitScriptWorld* world, WebKitWebPage* page, WebKitFrame* frame, gpointer data);
    static gboolean onMessage(WebKitWebPage* page, WebKitUserMessage* message, gpointer data);
#ifndef TVBROWSER_WEBKITGTK
    static void onConsole(WebKitWebPage* page, WebKitConsoleMessage* message, gpointer) {
        send(page, kLogMessage, "page", webkit_console_message_get_text(message));
    }
#endif
    static void send(WebKitWebPage* page, const char* message, const std::string& name, const std::string& value) {
        webkit_web_page_send_message_to_view(
            page, webkit_user_message_new(message, g_variant_new(kParametersType, name.c_str(), value.c_str())),
            nullptr, nullptr, nullptr);
    }
    void addPage(WebKitWebPage* page);
    void removePage(guint64 id);
    nlohmann::json call(WebKitWebPage* page, std::uint64_t instance, const std::string& name,
                        const nlohmann::json& argument);

    const std::string deviceSecret;
    std::string memory;  ///< a line for the log
    std::unique_ptr<Broadcast> broadcast;
    std::map<guint64, std::shared_ptr<Natives>> pages;
};

void Extension::addPage(WebKitWebPage* page) {
    struct End {
        Extension& extension;
        guint64 id;
    };
    const guint64 id = webkit_web_page_get_id(page);
    pages[id] = std::make_shared<Natives>(
        [this, page](std::uint64_t instance, const std::string& name, const nlohmann::json& argument) {
            return call(page, instance, name, argument);
        },
        [page](const std::string& text) { send(page, kLogMessage, "script", text); });
    g_object_weak_ref(
        G_OBJECT(page),
        [](gpointer data, GObject*) {
            const std::unique_ptr<End> end(static_cast<End*>(data));
            end->extension.removePage(end->id);
        },
        new End{*this, id});
    send(page, kLogMessage, "extension", memory);
    g_signal_connect(page, "user-message-received", G_CALLBACK(onMessage), this);
#ifndef TVBROWSER_WEBKITGTK
    g_signal_connect(page, "console-message-sent", G_CALLBACK(onConsole), nullptr);
#endif
}

void Extension::removePage(guint64 id) {
    const auto found = pages.find(id);
    if (found != pages.end()) {
        found->second->end();
        pages.erase(found);
    }
}

nlohmann::json Extension::call(WebKitWebPage* page, std::uint64_t instance, const std::string& name,
                               const nlohmann::json& argument) {
    if (name == kDeviceIdCall) {
        return deviceId(deviceSecret, argument);
    }
    if (!isCallOfTheSet(name)) {
        nlohmann::json result = broadcast->call(name, argument);
        if (isTune(name)) {
            send(page, kCallMessage, kTuneCall, callOf(instance, argument));
        }
        return result;
    }
    if (!mayCall(name, argument, *broadcast)) {
        return false;
    }
    send(page, kCallMessage, name, callOf(instance, argument));
    return answerOf(name, argument);
}

void Extension::onDocument(WebKitScriptWorld* world, WebKitWebPage* page, WebKitFrame* frame, gpointer data) {
    auto& self = *static_cast<Extension*>(data);
    const auto found = self.pages.find(webkit_web_page_get_id(page));
    if (found == self.pages.end() || webkit_frame_is_main_frame(frame) == FALSE) {
        return;
    }
    JSCContext* const context = webkit_frame_get_js_context_for_script_world(frame, world);
    found->second->offer(context);
    g_object_unref(context);
}

gboolean Extension::onMessage(WebKitWebPage* page, WebKitUserMessage* message, gpointer data) {
    auto& self = *static_cast<Extension*>(data);
    const char* name = nullptr;
    const char* value = nullptr;
    GVariant* const parameters = webkit_user_message_get_parameters(message);
    if (g_strcmp0(webkit_user_message_get_name(message), kEventMessage) != 0 || parameters == nullptr) {
        return FALSE;
    }
    g_variant_get(parameters, "(&s&s)", &name, &value);
    const auto found = self.pages.find(webkit_web_page_get_id(page));
    if (found != self.pages.end()) {
        const std::shared_ptr<Natives> told = found->second;  // a listener may end its page
        told->tell(name, nlohmann::json::parse(value, nullptr, false));
    }
    return TRUE;
}

}  // namespace

}  // namespace tvbrowser

/// `userData`: as kExtensionDataType says.
extern "C" G_MODULE_EXPORT void TVBROWSER_EXTENSION_ENTRY(WebKitWebExtension* extension, GVariant* userData) {
    const char* path = "";
    const char* secret = "";
    g_variant_get(userData, "(&s&s)", &path, &secret);
    new tvbrowser::Extension(extension, path, secret);  // lives as long as the process
}
