// The extension that the engine loads into each of its web processes. It connects the objects of pages to a library
// instance of this process, and to the set, which is the UI process.
// Threads: the main one. The broadcast's own threads only post to it.
// Blocks:  never.
// Fails:   without the library, pages get no natives, and a line says why.
#include <unistd.h>

#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include "broadcast.h"
#include "device_id.h"
#include "library.h"
#include "main_loop.h"
#include "messages.h"
#include "page_documents.h"
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
    Extension(WebKitWebExtension* extension, const std::string& libraryPath, std::string newDeviceSecret,
              std::string newKey)
        : deviceSecret(std::move(newDeviceSecret)), key(std::move(newKey)) {
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
                                                    for (const auto& [id, documents] : told) {
                                                        documents->tell(name, value);
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
    void addDocument(WebKitWebPage* page, WebKitFrame* frame, JSCContext* context);
    nlohmann::json call(WebKitWebPage* page, std::uint64_t instance, const std::string& name,
                        const nlohmann::json& argument);

    const std::string deviceSecret;
    const std::string key;
    std::string memory;  ///< a line for the log
    std::unique_ptr<Broadcast> broadcast;
    std::map<guint64, std::shared_ptr<PageDocuments>> pages;
    std::set<guint64> frames;  ///< those whose end will be noticed
};

/// Calls the function when the object ends.
void whenEnded(gpointer object, std::function<void()> action) {
    using Action = std::function<void()>;
    g_object_weak_ref(
        G_OBJECT(object),
        [](gpointer data, GObject*) {
            const std::unique_ptr<Action> ended(static_cast<Action*>(data));
            (*ended)();
        },
        new Action(std::move(action)));
}

void Extension::addPage(WebKitWebPage* page) {
    const guint64 id = webkit_web_page_get_id(page);
    pages[id] = std::make_shared<PageDocuments>(
        [this, page](std::uint64_t instance, const std::string& name, const nlohmann::json& argument) {
            return call(page, instance, name, argument);
        },
        [page](const std::string& text) { send(page, kLogMessage, "script", text); }, key);
    whenEnded(page, [this, id] { pages.erase(id); });
    send(page, kLogMessage, "extension", memory);
    g_signal_connect(page, "user-message-received", G_CALLBACK(onMessage), this);
#ifndef TVBROWSER_WEBKITGTK
    g_signal_connect(page, "console-message-sent", G_CALLBACK(onConsole), nullptr);
#endif
}

void Extension::addDocument(WebKitWebPage* page, WebKitFrame* frame, JSCContext* context) {
    const guint64 pageId = webkit_web_page_get_id(page);
    const guint64 id = webkit_frame_get_id(frame);
    const auto found = pages.find(pageId);
    if (found == pages.end()) {
        return;
    }
    found->second->begin(id, context);
    if (frames.insert(id).second) {
        whenEnded(frame, [this, pageId, id] {
            frames.erase(id);
            if (const auto of = pages.find(pageId); of != pages.end()) {
                of->second->end(id);
            }
        });
    }
}

nlohmann::json Extension::call(WebKitWebPage* page, std::uint64_t instance, const std::string& name,
                               const nlohmann::json& argument) {
    if (name == kDeviceIdCall) {
        return deviceId(deviceSecret, argument);
    }
    if (name == "isWithinBoundary") {
        return isOfApplication(argument);
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
    JSCContext* const context = webkit_frame_get_js_context_for_script_world(frame, world);
    static_cast<Extension*>(data)->addDocument(page, frame, context);
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
        const std::shared_ptr<PageDocuments> told = found->second;  // a listener may end its page
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
    const char* key = "";
    g_variant_get(userData, "(&s&s&s)", &path, &secret, &key);
    new tvbrowser::Extension(extension, path, secret, key);  // lives as long as the process
}
