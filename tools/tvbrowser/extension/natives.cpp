// The functions of a page's natives. Values cross as JSON.
#include "natives.h"

#include "messages.h"

namespace tvbrowser {

namespace {

std::string textOf(const nlohmann::json& value) {
    return value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

void set(JSCValue* object, const char* name, JSCValue* function) {
    jsc_value_object_set_property(object, name, function);
    g_object_unref(function);
}

}  // namespace

void Natives::offer(JSCContext* context) {
    forgetListener();
    instance = 0;
    JSCValue* const object = jsc_value_new_object(context, nullptr, nullptr);
    set(object, "call",
        jsc_value_new_function(context, "call", G_CALLBACK(onCall), this, nullptr, G_TYPE_STRING, 2, G_TYPE_STRING,
                               G_TYPE_STRING));
    set(object, "listen",
        jsc_value_new_function(context, "listen", G_CALLBACK(onListen), this, nullptr, G_TYPE_NONE, 1, JSC_TYPE_VALUE));
    set(object, "log",
        jsc_value_new_function(context, "log", G_CALLBACK(onLog), this, nullptr, G_TYPE_NONE, 1, G_TYPE_STRING));
    set(object, "begin",
        jsc_value_new_function(context, "begin", G_CALLBACK(onBegin), this, nullptr, G_TYPE_NONE, 1, G_TYPE_DOUBLE));
    jsc_context_set_value(context, kNativesName, object);
    g_object_unref(object);
}

void Natives::tell(const std::string& name, const nlohmann::json& value) {
    if (listener == nullptr) {
        return;
    }
    // The listener may bring a new document, which forgets it.
    JSCValue* const told = JSC_VALUE(g_object_ref(listener));
    JSCValue* const result =
        jsc_value_function_call(told, G_TYPE_STRING, name.c_str(), G_TYPE_STRING, textOf(value).c_str(), G_TYPE_NONE);
    JSCContext* const context = jsc_value_get_context(told);
    if (JSCException* const exception = jsc_context_get_exception(context)) {
        char* const report = jsc_exception_report(exception);
        log(std::string("error in the listener for ") + name + ": " + report);
        g_free(report);
        jsc_context_clear_exception(context);
    }
    g_object_unref(result);
    g_object_unref(told);
}

char* Natives::onCall(const char* name, const char* argument, gpointer natives) {
    auto& self = *static_cast<Natives*>(natives);
    try {
        const nlohmann::json value = argument == nullptr ? nullptr : nlohmann::json::parse(argument);
        return g_strdup(textOf(self.call(self.instance, name == nullptr ? "" : name, value)).c_str());
    } catch (const std::exception& error) {
        jsc_context_throw(jsc_context_get_current(), error.what());
        return nullptr;
    }
}

void Natives::onListen(JSCValue* function, gpointer natives) {
    auto& self = *static_cast<Natives*>(natives);
    self.forgetListener();
    if (jsc_value_is_function(function)) {
        self.listener = JSC_VALUE(g_object_ref(function));
    }
}

void Natives::onLog(const char* text, gpointer natives) {
    static_cast<Natives*>(natives)->log(text == nullptr ? "" : text);
}

void Natives::onBegin(double instance, gpointer natives) {
    static_cast<Natives*>(natives)->instance = static_cast<std::uint64_t>(instance);
}

void Natives::forgetListener() {
    g_clear_object(&listener);
}

}  // namespace tvbrowser
