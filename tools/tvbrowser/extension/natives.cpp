// The functions of a document's natives. Values cross as JSON.
#include "natives.h"

#include <stdexcept>

#include "messages.h"

namespace tvbrowser {

namespace {

std::string textOf(const nlohmann::json& value) {
    return value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

/// What a function has been given as its user data.
Natives& of(gpointer owner) {
    return **static_cast<std::shared_ptr<Natives>*>(owner);
}

void set(JSCValue* object, const char* name, JSCValue* function) {
    jsc_value_object_set_property(object, name, function);
    g_object_unref(function);
}

}  // namespace

void Natives::offer(JSCContext* context) {
    JSCValue* const object = jsc_value_new_object(context, nullptr, nullptr);
    set(object, "call", functionOf(context, "call", G_CALLBACK(onCall), G_TYPE_STRING, {G_TYPE_STRING, G_TYPE_STRING}));
    set(object, "listen", functionOf(context, "listen", G_CALLBACK(onListen), G_TYPE_NONE, {JSC_TYPE_VALUE}));
    set(object, "log", functionOf(context, "log", G_CALLBACK(onLog), G_TYPE_NONE, {G_TYPE_STRING}));
    set(object, "begin",
        functionOf(context, "begin", G_CALLBACK(onBegin), G_TYPE_NONE, {G_TYPE_STRING, G_TYPE_DOUBLE}));
    jsc_context_set_value(context, kNativesName, object);
    g_object_unref(object);
}

/// The engine passes a function its user data as the last argument.
JSCValue* Natives::functionOf(JSCContext* context, const char* name, GCallback callback, GType result,
                              const std::vector<GType>& arguments) {
    using Owner = std::shared_ptr<Natives>;
    std::vector<GType> types = arguments;
    return jsc_value_new_functionv(
        context, name, callback, new Owner(shared_from_this()),
        [](gpointer owner) { delete static_cast<Owner*>(owner); }, result, static_cast<guint>(types.size()),
        types.data());
}

void Natives::end() {
    forgetListener();
    state = State::ended;
}

void Natives::tell(const std::string& name, const nlohmann::json& value) {
    if (listener == nullptr) {
        return;
    }
    // The listener may end its document, which forgets it.
    JSCValue* const told = JSC_VALUE(g_object_ref(listener));
    JSCValue* const result =
        jsc_value_function_call(told, G_TYPE_STRING, name.c_str(), G_TYPE_STRING, textOf(value).c_str(), G_TYPE_NONE);
    JSCContext* const context = jsc_value_get_context(told);
    if (JSCException* const exception = jsc_context_get_exception(context)) {
        char* const report = jsc_exception_report(exception);
        if (state == State::begun) {
            log(std::string("error in the listener for ") + name + ": " + report);
        }
        g_free(report);
        jsc_context_clear_exception(context);
    }
    g_object_unref(result);
    g_object_unref(told);
}

char* Natives::onCall(const char* name, const char* argument, gpointer natives) {
    Natives& self = of(natives);
    if (!self.isInUse()) {
        return nullptr;
    }
    try {
        const nlohmann::json value = argument == nullptr ? nullptr : nlohmann::json::parse(argument);
        return g_strdup(textOf(self.call(self.instance, name == nullptr ? "" : name, value)).c_str());
    } catch (const std::exception& error) {
        jsc_context_throw(jsc_context_get_current(), error.what());
        return nullptr;
    }
}

void Natives::onListen(JSCValue* function, gpointer natives) {
    Natives& self = of(natives);
    if (!self.isInUse()) {
        return;
    }
    self.forgetListener();
    if (jsc_value_is_function(function)) {
        self.listener = JSC_VALUE(g_object_ref(function));
    }
}

void Natives::onLog(const char* text, gpointer natives) {
    if (of(natives).isInUse()) {
        of(natives).log(text == nullptr ? "" : text);
    }
}

void Natives::onBegin(const char* key, double instance, gpointer natives) {
    Natives& self = of(natives);
    if (self.state == State::offered && key != nullptr && self.key == key) {
        self.state = State::begun;
        self.instance = static_cast<std::uint64_t>(instance);
    } else {
        jsc_context_throw(jsc_context_get_current(), "these natives are not yours");
    }
}

bool Natives::isInUse() const {
    if (state != State::begun) {
        jsc_context_throw(jsc_context_get_current(),
                          state == State::ended ? "the page has gone" : "the document belongs to no application");
    }
    return state == State::begun;
}

void Natives::forgetListener() {
    g_clear_object(&listener);
}

}  // namespace tvbrowser
