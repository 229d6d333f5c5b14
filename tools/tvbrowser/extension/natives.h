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

/// The natives of one page. The functions that the page holds keep them.
class Natives : public std::enable_shared_from_this<Natives> {
public:
    /// `instance`: the application that the document belongs to. May throw std::runtime_error, which the page sees.
    using Call = std::function<nlohmann::json(std::uint64_t instance, const std::string& name, const nlohmann::json&)>;
    using Log = std::function<void(const std::string& text)>;

    Natives(Call newCall, Log newLog) : call(std::move(newCall)), log(std::move(newLog)) {}
    Natives(const Natives&) = delete;
    Natives& operator=(const Natives&) = delete;
    ~Natives() { forgetListener(); }

    /// Puts the natives into a new document. The listener of the document before is forgotten.
    void offer(JSCContext* context);
    /// Tells the document's listener.
    void tell(const std::string& name, const nlohmann::json& value);
    /// The page has gone: no call goes through any more.
    void end();

private:
    JSCValue* functionOf(JSCContext* context, const char* name, GCallback callback, GType result,
                         const std::vector<GType>& arguments);

    static char* onCall(const char* name, const char* argument, gpointer natives);
    static void onListen(JSCValue* function, gpointer natives);
    static void onLog(const char* text, gpointer natives);
    static void onBegin(double instance, gpointer natives);
    void forgetListener();

    Call call;
    Log log;
    std::uint64_t instance = 0;
    JSCValue* listener = nullptr;
};

}  // namespace tvbrowser
