#include "page_documents.h"

#include <gmock/gmock.h>

#include "messages.h"

namespace tvbrowser {

namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr PageDocuments::FrameId kPage = 1;
constexpr PageDocuments::FrameId kFrame = 2;

/// A page with a frame. The scripts of a document find its natives under the name `natives`.
class DocumentsOfAPage : public testing::Test {
protected:
    DocumentsOfAPage() {
        begin(kPage);
        begin(kFrame);
    }
    ~DocumentsOfAPage() override {
        documents.reset();
        for (const auto& [frame, context] : contexts) {
            g_object_unref(context);
        }
    }

    void begin(PageDocuments::FrameId frame) {
        JSCContext*& context = contexts[frame];
        g_clear_object(&context);
        context = jsc_context_new();
        documents->begin(frame, context);
        run(frame, std::string("var natives = ") + kNativesName + "; natives.begin('key', 17); var told = [];" +
                       "natives.listen(function (name, value) { told.push(name + value); });");
    }
    std::string run(PageDocuments::FrameId frame, const std::string& script) {
        JSCValue* const value = jsc_context_evaluate(contexts[frame], script.c_str(), -1);
        char* const text = jsc_value_to_string(value);
        std::string result = text;
        g_free(text);
        g_object_unref(value);
        return result;
    }
    std::string call(PageDocuments::FrameId frame, const std::string& name, const json& argument) {
        return run(frame, "natives.call('" + name + "', '" + argument.dump() + "')");
    }
    std::string told(PageDocuments::FrameId frame) { return run(frame, "told.join()"); }

    std::vector<std::string> calls;
    std::map<PageDocuments::FrameId, JSCContext*> contexts;
    std::unique_ptr<PageDocuments> documents = std::make_unique<PageDocuments>(
        [this](std::uint64_t, const std::string& name, const json& argument) {
            calls.push_back(name + argument.dump());
            return true;
        },
        [](const std::string&) {}, "key");
};

TEST_F(DocumentsOfAPage, AreAllTold) {
    documents->tell("service", nullptr);
    EXPECT_EQ(told(kPage), "servicenull");
    EXPECT_EQ(told(kFrame), "servicenull");
}

TEST_F(DocumentsOfAPage, AreNotToldAfterTheirEnd) {
    documents->end(kFrame);
    documents->tell("service", nullptr);
    EXPECT_EQ(told(kPage), "servicenull");
    EXPECT_EQ(told(kFrame), "");
    run(kFrame, "natives.call('hide', 'null')");
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(DocumentsOfAPage, AreReplacedOneByOne) {
    begin(kFrame);
    documents->tell("service", nullptr);
    EXPECT_EQ(told(kPage), "servicenull");
    EXPECT_EQ(told(kFrame), "servicenull");
}

TEST_F(DocumentsOfAPage, LeaveNoStreamListenersBehind) {
    call(kPage, "addStreamEventListener", {{"id", 1}});
    call(kFrame, "addStreamEventListener", {{"id", 2}});
    call(kFrame, "addStreamEventListener", {{"id", 3}});
    call(kFrame, "removeStreamEventListener", {{"id", 2}});
    calls.clear();
    begin(kFrame);
    EXPECT_THAT(calls, ElementsAre(R"(removeStreamEventListener{"id":3})"));
    documents.reset();
    EXPECT_THAT(calls, ElementsAre(R"(removeStreamEventListener{"id":3})", R"(removeStreamEventListener{"id":1})"));
}

TEST_F(DocumentsOfAPage, ShareTheKeyset) {
    EXPECT_EQ(call(kPage, "keyset", nullptr), "null");
    call(kFrame, "setKeyset", {{"mask", 1}});
    EXPECT_EQ(told(kPage), R"(keyset{"mask":1})");
    EXPECT_EQ(told(kFrame), "");
    EXPECT_EQ(call(kPage, "keyset", nullptr), R"({"mask":1})");
}

TEST_F(DocumentsOfAPage, ControlTheBroadcastOneAtATime) {
    EXPECT_EQ(call(kFrame, "takeControl", nullptr), "true");
    EXPECT_EQ(call(kFrame, "takeControl", nullptr), "true");
    EXPECT_EQ(call(kPage, "takeControl", nullptr), "false");
    EXPECT_EQ(told(kFrame), "controlIsWantednull");
    call(kPage, "leaveControl", nullptr);
    EXPECT_EQ(call(kPage, "takeControl", nullptr), "false");
    call(kFrame, "leaveControl", nullptr);
    EXPECT_EQ(call(kPage, "takeControl", nullptr), "true");
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(DocumentsOfAPage, LeaveTheControlWhenTheyAreAskedOrEnd) {
    call(kFrame, "takeControl", nullptr);
    run(kFrame, "natives.listen(function () { natives.call('leaveControl', 'null'); })");
    EXPECT_EQ(call(kPage, "takeControl", nullptr), "true");
    documents->end(kPage);
    EXPECT_EQ(call(kFrame, "takeControl", nullptr), "true");
}

TEST_F(DocumentsOfAPage, MayEndAnotherWhenTheyAreTold) {
    const auto end = [this] { documents->end(kFrame); };
    JSCValue* const function = jsc_value_new_function(
        contexts[kPage], "endFrame", G_CALLBACK(+[](gpointer action) { (*static_cast<decltype(end)*>(action))(); }),
        const_cast<void*>(static_cast<const void*>(&end)), nullptr, G_TYPE_NONE, 0);
    jsc_context_set_value(contexts[kPage], "endFrame", function);
    g_object_unref(function);
    run(kPage, "natives.listen(endFrame)");
    documents->tell("service", nullptr);
    EXPECT_EQ(told(kFrame), "");
}

}  // namespace

}  // namespace tvbrowser
