// Natives: the functions that the script of a page's objects calls, and the way back for events.
// Threads: the main one.
// Blocks:  never.
// Fails:   a wrong call throws in the page.
#pragma once

#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>

#include "engine.h"

namespace tvbrowser {

/// The natives of one page. They live as long as the process, because functions that a page still holds point to them.
class Natives {
public:
    /// `instance`: the application that the document belongs to. May throw std::runtime_error, which the page sees.
    using Call = std::function<nlohmann::json(std::uint64_t instance, const std::string& name, const nlohmann::json&)>;
    using Log = std::function<void(const std::string& text)>;

    Natives(Call newCall, Log newLog) : call(std::move(newCall)), log(std::move(newLog)) {}
    Natives(const Natives&) = delete;
    Natives& operator=(const Natives&) = delete;
    ~Natives() = delete;

    /// Puts the natives into a new document. The listener of the document before is forgotten.
    void offer(JSCContext* context);
    /// Tells the document's listener.
    void tell(const std::string& name, const nlohmann::json& value);

private:
    static char* onCall(const char* name, const char* argument, gpointer natives);
    static void onListen(JSCValue* function, gpointer natives);
    static void onLog(const char* text, gpointer natives);
    static void onBegin(double instance, gpointer natives);
    void forgetListener();

    const Call call;
    const Log log;
    std::uint64_t instance = 0;
    JSCValue* listener = nullptr;
};

}  // namespace tvbrowser
