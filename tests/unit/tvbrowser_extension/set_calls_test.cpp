// What calls of the set return in the page.
#include "set_calls.h"

#include <gtest/gtest.h>

namespace tvbrowser {

namespace {

using nlohmann::json;

constexpr int kAutostart = 1;
constexpr int kPresent = 2;
constexpr int kKill = 4;

/// Application 190.APP as the broadcast tells of it.
json application(int number, int control, const std::string& url, const std::vector<json>& profiles = {}) {
    return {{"organisation", 0x190},         {"application", number}, {"control", control},
            {"entries", json::array({url})}, {"profiles", profiles},  {"name", "A"}};
}

json known(const std::vector<json>& list, bool isComplete = true) {
    return {{"known", true}, {"signalled", true}, {"complete", isComplete}, {"list", list}};
}

json profile(int options, int minor) {
    return {{"profile", options}, {"major", 1}, {"minor", minor}, {"micro", 1}};
}

const json kApplications =
    known({application(0x1F, kPresent, "http://a.example/1"), application(2, kKill, "http://a.example/2"),
           application(3, kAutostart, ""), application(4, kPresent, "file:///etc/4"),
           application(5, kPresent, "http://a.example/5", {profile(2, 1)}),
           application(6, kPresent, "http://a.example/6", {profile(2, 1), profile(0, 6)})});

json setKeyset(unsigned int mask, const std::vector<int>& otherKeys = {}) {
    return answerOf("setKeyset", {{"mask", mask}, {"otherKeys", otherKeys}});
}

}  // namespace

TEST(CreateApplication, IsPossibleForASignalledApplication) {
    for (const char* url : {"dvb://current.ait/190.1f", "dvb://current.ait/190.1F?a=1#b", "DVB://Current.AIT/00190.6",
                            "http://a.example/1?from=here"}) {
        EXPECT_TRUE(canStart(url, kApplications)) << url;
    }
}

TEST(CreateApplication, IsImpossibleForWhatIsNotSignalledOrMayNotRun) {
    for (const char* url : {"dvb://current.ait/190.9", "dvb://current.ait/191.1f", "dvb://current.ait/190.2"}) {
        EXPECT_FALSE(canStart(url, kApplications)) << url;
    }
    EXPECT_FALSE(canStart("dvb://current.ait/190.1f", known(kApplications["list"], false)));
}

TEST(CreateApplication, IsImpossibleForWhatTheTerminalCannotStart) {
    for (const char* url :
         {"dvb://current.ait/190.3", "dvb://current.ait/190.4", "dvb://current.ait/190.5", "http://a.example/5"}) {
        EXPECT_FALSE(canStart(url, kApplications)) << url;
    }
}

TEST(CreateApplication, IsImpossibleForAUrlOfTheAitThatIsWrong) {
    const json applications = known({application(1, kPresent, "http://a.example/1")});
    for (const char* url : {"dvb://current.ait/190.-ffffffff", "dvb://current.ait/ 190.1", "dvb://current.ait/190. 1",
                            "dvb://current.ait/0x190.1", "dvb://current.ait/190.1/a", "dvb://current.ait/190.10001",
                            "dvb://current.ait/190", "dvb://current.ait/", "dvb://1.2.3"}) {
        EXPECT_FALSE(canStart(url, applications)) << url;
    }
}

TEST(CreateApplication, IsPossibleForAnyHttpUrlAndNoOther) {
    EXPECT_TRUE(canStart("https://b.example/", kApplications));
    EXPECT_TRUE(canStart("http://b.example/", known({}, false)));
    EXPECT_FALSE(canStart("file:///etc/passwd", kApplications));
    EXPECT_FALSE(canStart("page.html", kApplications));
    EXPECT_FALSE(canStart("", kApplications));
}

TEST(SetKeyset, GivesTheGroupsThatTheRemoteHas) {
    EXPECT_EQ(setKeyset(0x3), 0x3);
    EXPECT_EQ(setKeyset(0x7FF), 0x1BF);
    EXPECT_EQ(setKeyset(0x240), 0);
}

TEST(SetKeyset, GivesOtherKeysOnlyIfOneOfThemIsThere) {
    EXPECT_EQ(setKeyset(0x401, {404}), 0x401);
    EXPECT_EQ(setKeyset(0x401, {9999, -1}), 0x1);
    EXPECT_EQ(setKeyset(0x1, {404}), 0x1);
}

TEST(CallsOfTheSet, AreAnsweredWithTrue) {
    for (const char* name : {"createApplication", "destroyApplication", "showApplication", "hideApplication"}) {
        EXPECT_TRUE(isCallOfTheSet(name));
        EXPECT_EQ(answerOf(name, nullptr), true);
    }
    EXPECT_FALSE(isCallOfTheSet("tune"));
}

TEST(ADocument, IsOfTheApplicationWithinItsBoundary) {
    const auto isWithin = [](const std::string& place) {
        return isOfApplication(
            {{"place", place}, {"url", "http://a.example/app?x"}, {"boundaries", {"http://b.example/shared/"}}});
    };
    for (const char* place : {"http://a.example", "http://a.example:80/other", "http://b.example/shared/frame.html"}) {
        EXPECT_TRUE(isWithin(place)) << place;
    }
    for (const char* place : {"https://a.example/app", "http://b.example/other", "null", ""}) {
        EXPECT_FALSE(isWithin(place)) << place;
    }
}

}  // namespace tvbrowser
