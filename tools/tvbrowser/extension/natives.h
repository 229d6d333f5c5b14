// Natives: the functions that the script of a page's objects calls, and the way back for events.
// Threads: the main one.
// Blocks:  never.
// Fails:   a wrong call throws in the page.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "engine.h"

namespace tvbrowser {

/// The natives of one document. The functions that the document holds keep them. They do nothing until the first script
/// has shown that it knows the key, because a page may come before it: to the empty document that a frame begins with.
class Natives : public std::enable_shared_from_this<Natives> {
public:
    /// `instance`: the application that the document belongs to. May throw std::runtime_error, which the page sees.
    using Call = std::function<nlohmann::json(std::uint64_t instance, const std::string& name, const nlohmann::json&)>;
    using Log = std::function<void(const std::string& text)>;

    Natives(Call newCall, Log newLog, std::string newKey)
        : call(std::move(newCall)), log(std::move(newLog)), key(std::move(newKey)) {}
    Natives(const Natives&) = delete;
    Natives& operator=(const Natives&) = delete;
    ~Natives() { forgetListener(); }

    /// Puts the natives into their document.
    void offer(JSCContext* context);
    /// Tells the document's listener.
    void tell(const std::string& name, const nlohmann::json& value);
    /// The document has gone: no call goes through any more.
    void end();

private:
    JSCValue* functionOf(JSCContext* context, const char* name, GCallback callback, GType result,
                         const std::vector<GType>& arguments);

    static char* onCall(const char* name, const char* argument, gpointer natives);
    static void onListen(JSCValue* function, gpointer natives);
    static void onLog(const char* text, gpointer natives);
    static void onBegin(const char* key, double instance, gpointer natives);
    /// Throws in the page before the beginning and after the end.
    bool isInUse() const;
    void forgetListener();

    const Call call;
    const Log log;
    const std::string key;
    enum class State { offered, begun, ended } state = State::offered;
    std::uint64_t instance = 0;
    JSCValue* listener = nullptr;
};

}  // namespace tvbrowser
