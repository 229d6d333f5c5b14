#include "natives.h"

#include <gmock/gmock.h>

#include "messages.h"

// The engine keeps a little until its process ends.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
    return "leak:libWPEWebKit";
}

namespace tvbrowser {

namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// A document: a script context with the natives in it, and a script that gives the natives the names of the test.
class ADocumentWithNatives : public testing::Test {
protected:
    ADocumentWithNatives() {
        natives.offer(context);
        run(std::string("var natives = ") + kNativesName + "; delete globalThis." + kNativesName + ";");
        run("natives.begin('key', 17)");
    }
    ~ADocumentWithNatives() override {
        natives.end();
        g_object_unref(context);
    }

    /// The value of a script as text.
    std::string run(const std::string& script) {
        JSCValue* const value = jsc_context_evaluate(context, script.c_str(), -1);
        char* const text = jsc_value_to_string(value);
        std::string result = text;
        g_free(text);
        g_object_unref(value);
        return result;
    }
    /// The exception of the last script.
    std::string exception() {
        JSCException* const thrown = jsc_context_get_exception(context);
        std::string text = thrown == nullptr ? "" : jsc_exception_get_message(thrown);
        jsc_context_clear_exception(context);
        return text;
    }

    struct Call {
        std::uint64_t instance;
        std::string name;
        json argument;
        bool operator==(const Call& other) const {
            return instance == other.instance && name == other.name && argument == other.argument;
        }
    };
    std::vector<Call> calls;
    std::vector<std::string> lines;
    json answer = true;
    const std::shared_ptr<Natives> owned = std::make_shared<Natives>(
        [this](std::uint64_t instance, const std::string& name, const json& argument) {
            calls.push_back({instance, name, argument});
            if (name == "wrong") {
                throw std::runtime_error("there is no call \"wrong\"");
            }
            return answer;
        },
        [this](const std::string& text) { lines.push_back(text); }, "key");
    Natives& natives = *owned;
    JSCContext* context = jsc_context_new();
};

TEST_F(ADocumentWithNatives, CallsWithAValueAndGetsOne) {
    answer = {{"name", "Föhn"}, {"list", {1, 2}}};
    EXPECT_EQ(run("natives.call('channels', JSON.stringify({a: [1, 'x']}))"), R"({"list":[1,2],"name":"Föhn"})");
    EXPECT_THAT(calls, ElementsAre(Call{17, "channels", {{"a", {1, "x"}}}}));
}

TEST_F(ADocumentWithNatives, SaysWhichApplicationItBelongsTo) {
    run("natives.call('hide', 'null')");
    EXPECT_THAT(calls, ElementsAre(Call{17, "hide", nullptr}));
}

TEST_F(ADocumentWithNatives, GetsAnErrorForAWrongCall) {
    run("natives.call('wrong', 'null')");
    EXPECT_EQ(exception(), "there is no call \"wrong\"");
    run("natives.call('channels', '{')");
    EXPECT_THAT(exception(), HasSubstr("parse error"));
    EXPECT_EQ(calls.size(), 1U);
}

TEST_F(ADocumentWithNatives, GetsAnErrorForAValueThatIsNoText) {
    run("natives.call('channels', {toString() { throw new Error('hostile'); }})");
    EXPECT_EQ(exception(), "hostile");
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(ADocumentWithNatives, GetsTextsThatAreNoUtf8WithReplacements) {
    answer = "a\xFFz";
    EXPECT_EQ(run("natives.call('channels', 'null')"), "\"a\xEF\xBF\xBDz\"");
}

TEST_F(ADocumentWithNatives, IsToldOfEventsInTheirOrder) {
    run("var told = []; natives.listen(function (name, value) { told.push(name + value); });");
    natives.tell("channelChanged", {{"sid", 1}});
    natives.tell("service", nullptr);
    EXPECT_EQ(run("told.join()"), R"(channelChanged{"sid":1},servicenull)");
}

TEST_F(ADocumentWithNatives, IsNotToldWithoutAListener) {
    natives.tell("service", nullptr);
    run("var told = 0; natives.listen(function () { told++; }); natives.listen(null);");
    natives.tell("service", nullptr);
    EXPECT_EQ(run("told"), "0");
}

TEST_F(ADocumentWithNatives, WhoseListenerThrowsIsReportedAndToldAgain) {
    run("var told = 0; natives.listen(function () { told++; throw new Error('broken'); });");
    natives.tell("service", nullptr);
    EXPECT_THAT(lines, ElementsAre(HasSubstr("error in the listener for service")));
    EXPECT_EQ(exception(), "");
    natives.tell("service", nullptr);
    EXPECT_EQ(run("told"), "2");
}

TEST_F(ADocumentWithNatives, MayReplaceItsListenerInsideOfIt) {
    run("var told = ''; natives.listen(function () { told += 'a'; natives.listen(function () { told += 'b'; }); });");
    natives.tell("service", nullptr);
    natives.tell("service", nullptr);
    EXPECT_EQ(run("told"), "ab");
}

TEST_F(ADocumentWithNatives, BeginsOnce) {
    run("natives.begin('key', 18)");
    EXPECT_EQ(exception(), "these natives are not yours");
    run("natives.call('hide', 'null')");
    EXPECT_THAT(calls, ElementsAre(Call{17, "hide", nullptr}));
}

TEST_F(ADocumentWithNatives, GetsNothingWithoutTheKey) {
    const auto others = std::make_shared<Natives>(
        [this](std::uint64_t, const std::string&, const json&) {
            calls.push_back({});
            return answer;
        },
        [this](const std::string& text) { lines.push_back(text); }, "key");
    others->offer(context);
    run(std::string("var others = ") + kNativesName + ";");
    for (const char* script : {"others.begin('guess', 17)", "others.begin(null, 17)", "others.begin()"}) {
        run(script);
        EXPECT_EQ(exception(), "these natives are not yours") << script;
    }
    for (const char* script : {"others.call('hide', 'null')", "others.log('a line')", "others.listen(told)"}) {
        run(std::string("var told = 0; ") + script);
        EXPECT_EQ(exception(), "the document belongs to no application") << script;
    }
    EXPECT_THAT(calls, IsEmpty());
    EXPECT_THAT(lines, IsEmpty());
}

TEST_F(ADocumentWithNatives, GetsAnErrorAfterTheEndOfItsPage) {
    run("var told = 0; natives.listen(function () { told++; });");
    natives.end();
    natives.tell("service", nullptr);
    for (const char* script : {"natives.log('a line')", "natives.call('hide', 'null')", "natives.listen(null)"}) {
        run(script);
        EXPECT_EQ(exception(), "the page has gone") << script;
    }
    EXPECT_THAT(calls, IsEmpty());
    EXPECT_THAT(lines, IsEmpty());
    EXPECT_EQ(run("told"), "0");
}

TEST_F(ADocumentWithNatives, WritesIntoTheLog) {
    run("natives.log('a line')");
    EXPECT_THAT(lines, ElementsAre("a line"));
}

}  // namespace

}  // namespace tvbrowser
