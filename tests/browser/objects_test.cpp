// How elements come to be objects of the browser, and the objects that say what the set is.
#include "object_test.h"

namespace browser_tests {

namespace {

class Objects : public AnObject {
protected:
    void run(const std::string& what) { pageEverywhere("objects.html?" + what); }
};

TEST_F(Objects, AreMadeByTheTypeOfAnElementAtAnyTime) {
    run("types");
    EXPECT_EQ(reported("none"), R"(["undefined","undefined"])");
    EXPECT_EQ(reported("typed"), R"([0,"function",true])");
    EXPECT_EQ(reported("inner"), "function");
    EXPECT_EQ(reported("untyped"), R"(["undefined",true])");
    EXPECT_EQ(reported("late", 1), "1");
    EXPECT_EQ(reported("late", 2), "2");
}

TEST_F(Objects, LeaveElementsOfOtherTypesAsTheyAre) {
    run("foreign");
    EXPECT_EQ(reported("members"), R"(["undefined","undefined","foreign.txt",true,"",0])");
    EXPECT_EQ(reported("own"), R"([3,"40"])");
}

TEST_F(Objects, GiveAPageItsApplication) {
    run("application");
    EXPECT_EQ(reported("same"), "true");
    EXPECT_EQ(reported("foreign"), "[null,null]");
    EXPECT_EQ(reported("window"), "true");
    EXPECT_EQ(reported("keyset"), "[0,17,17]");
    EXPECT_EQ(reported("groups"), "[1,2,4,8,16,32,64,128,256,512,1024]");
    EXPECT_EQ(reported("memory"), "true");
    EXPECT_EQ(reported("impossible"), "null");
    EXPECT_EQ(reported("other"), R"([true,false,false,"SecurityError"])");
}

TEST_F(Objects, HaveTheCodesOfKeys) {
    run("keys");
    EXPECT_EQ(reported("codes"), "[37,38,39,40,13,48,57,403,404,405,406,412,413,415,417,19,463,461]");
    EXPECT_EQ(reported("globals"), "true");
    EXPECT_TRUE(says("script: for developers"));
    EXPECT_EQ(reported("own"), "[1,2,3]");
    EXPECT_EQ(reported("keyset"), "49");
    press("RED");
    EXPECT_EQ(reported("key", 1), "[403,403,true,true]");
    press("LEFT");
    EXPECT_EQ(reported("key", 2), "[37,37,true,true]");
    press("PLAY");
    EXPECT_EQ(reported("key", 3), "[415,415,true,true]");
    press("BACK");
    EXPECT_EQ(reported("key", 4), "[461,461,true,true]");
}

TEST_F(Objects, HearEachKeyDownPressedAndUp) {
    run("keyEvents");
    reported("ready");
    std::size_t next = 0;
    const auto hear = [&](const std::string& type, const std::string& code) {
        EXPECT_EQ(reported("key", ++next), "[\"" + type + "\"," + code + "]");
    };
    const std::pair<const char*, const char*> keys[] = {
        {"LEFT", "37"}, {"5", "53"}, {"ENTER", "13"}, {"RED", "403"}, {"BACK", "461"}};
    for (const auto& [name, code] : keys) {
        press(name);
        hear("keydown", code);
        hear("keypress", code);
        hear("keyup", code);
    }
    const std::pair<const char*, const char*> taken[] = {{"UP", "38"}, {"BLUE", "406"}};
    for (const auto& [name, code] : taken) {
        press(name);
        hear("keydown", code);
        hear("keyup", code);
    }
}

TEST_F(Objects, MoveTheFocusByArrowsThatThePageDoesNotTake) {
    run("focus");
    reported("ready");
    EXPECT_EQ(reported("focus", 1), "a");
    press("RIGHT");
    EXPECT_EQ(reported("focus", 2), "b");
    press("ENTER");
    EXPECT_EQ(reported("click"), "b");
    press("LEFT");
    EXPECT_EQ(reported("focus", 3), "a");
    press("DOWN");
    EXPECT_EQ(reported("focus", 4), "c");
    press("UP");
    EXPECT_EQ(reported("kept"), "38");
}

TEST_F(Objects, GiveAPageTheKeysThatTheRemoteControlHas) {
    run("otherKeys");
    EXPECT_EQ(reported("all"), "[447,447,447]");
    EXPECT_EQ(reported("none"), "0");
    EXPECT_EQ(reported("keyset"), "[1025,[457]]");
    press("GREEN");
    press("INFO");
    press("RED");
    EXPECT_EQ(reported("key", 1), "457");
    EXPECT_EQ(reported("key", 2), "403");
}

TEST_F(Objects, AreMadeByTheFactoryIfTheyAreThere) {
    run("factory");
    EXPECT_EQ(reported("there"), "true");
    EXPECT_EQ(reported("notThere"), "false");
    EXPECT_EQ(reported("made"), R"([0,"function","undefined"])");
}

TEST_F(Objects, SayWhatTheSetCanDo) {
    run("capabilities");
    EXPECT_EQ(reported("profile").rfind("OITF_HD_UIPROF+DVB_C+META_EIT+META_SI", 0), 0U);
    EXPECT_EQ(reported("broadcast"), R"(["true","ID_DVB_C","true","dvb-si"])");
    EXPECT_EQ(reported("html5"), "true");
    EXPECT_EQ(reported("screen"), R"(["1280 720 8"])");
    EXPECT_EQ(reported("video"), "true");
    EXPECT_EQ(reported("dash"), "true");
    EXPECT_EQ(reported("has"), "[true,true,false,false,false,false,false,false]");
}

TEST_F(Objects, SayWhatTheViewerHasChosen) {
    run("configuration");
    EXPECT_EQ(reported("languages"), R"(["eng","eng","eng"])");
    EXPECT_EQ(reported("country"), "GBR");
    EXPECT_EQ(reported("switches"), "[true,true,false]");
    EXPECT_EQ(reported("readonly"), "TypeError");
}

TEST_F(Objects, SayWhatTheUserAgentSaysOfTheSet) {
    run("localSystem");
    EXPECT_EQ(reported("told"), "true");
    EXPECT_EQ(reported("agent"), "true");
    EXPECT_EQ(reported("power"), "[true,true,false]");
    EXPECT_EQ(reported("device"), "true");
}

TEST_F(Objects, NameTheNetworksOfTerrestrialChannels) {
    tsmake::Multiplex broadcast = broadcastWithEverywhere("objects.html?networks");
    broadcast.deliverySystem = std::string("\x5A\x0B\x02\xFA\xF0\x80\x1F\x81\x2A\xFF\xFF\xFF\xFF", 13);
    start(broadcast);
    EXPECT_EQ(reported("networks"), "[1]");
    EXPECT_EQ(reported("nid"), "1");
}

TEST_F(Objects, NameNoNetworksWithoutTerrestrialChannels) {
    run("networks");
    EXPECT_EQ(reported("networks"), "none");
    EXPECT_EQ(reported("nid"), "1");
}

TEST_F(Objects, GiveEachOriginAnIdentifierOfTheSet) {
    tsmake::Multiplex broadcast = broadcastWithEverywhere("objects.html?deviceId");
    tsmake::Application& other = broadcast.services[1].ait.versions[0].applications[0];
    other.applicationId = 2;
    other.urlBase.replace(other.urlBase.find("127.0.0.1"), std::string("127.0.0.1").size(), "localhost");
    tsmake::Application& again = broadcast.services[2].ait.versions[0].applications[0];
    again.applicationId = 3;
    start(broadcast);
    constexpr std::size_t kHost = std::string_view(R"(["127.0.0.1",)").size();
    const std::string first = reported("device", 1);
    const std::string second = reported("device", 2);
    EXPECT_EQ(second.rfind(R"(["localhost",)", 0), 0U) << second;
    EXPECT_NE(first.substr(kHost), second.substr(kHost));
    EXPECT_EQ(reported("device", 3), first);
    EXPECT_EQ(reported("refused"), "TypeError");
    EXPECT_EQ(reported("granted"), "[true,64]");
}

TEST_F(Objects, KnowTheAgesOfParentalControlAndBlockNothing) {
    run("parental");
    EXPECT_EQ(reported("schemes"), "[1,true,true,null]");
    EXPECT_EQ(reported("scheme"), R"(["dvb-si",0,-1,true])");
    EXPECT_EQ(reported("threshold"), R"(["dvb-si",true,true])");
    EXPECT_EQ(reported("noMore"), R"(["undefined","undefined","undefined"])");
}

TEST_F(Objects, StandBesideFontsOfTheNamesThatHbbTvHas) {
    run("fonts");
    EXPECT_EQ(reported("tiresias"), "[true,true]");
    EXPECT_EQ(reported("gothic"), "[true,true]");
}

TEST_F(Objects, ShowNothingElseToPages) {
    run("clean");
    EXPECT_EQ(reported("more"), "[]");
}

TEST_F(Objects, WorkInAPageThatHasChangedTheLanguage) {
    run("hostile");
    EXPECT_EQ(reported("bound"), "ccid:1.1025.28106");
    EXPECT_EQ(reported("state", 2), "2");
}

}  // namespace

}  // namespace browser_tests
