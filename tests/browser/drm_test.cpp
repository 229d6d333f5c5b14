// The DRM agent of pages, over the CA operations.
#include "object_test.h"

namespace browser_tests {

namespace {

class TheDrmAgent : public AnObject {
protected:
    void run(const std::string& what) { pageEverywhere("drm.html?" + what); }
};

TEST_F(TheDrmAgent, SendsAMessageAndTellsTheAnswer) {
    run("message");
    EXPECT_EQ(reported("before"), "1");
    operate({"ca", "insert", "0"});
    EXPECT_EQ(reported("status"), "0");
    EXPECT_EQ(reported("others"), "[1,1,1]");
    EXPECT_EQ(reported("sent", 1), "string");
    EXPECT_EQ(reported("result", 1), R"(["unnamed","",5])");
    EXPECT_EQ(reported("sent", 2), "string");
    const auto session = [] {
        ChildProcess dtvctl(DTVCTL, {"--json", "status"}, "dtvctl");
        dtvctl.wait();
        const std::string status = dtvctl.output();
        const std::size_t at = status.find("\"ca_session\":");
        return at == std::string::npos ? std::string() : std::to_string(std::stoull(status.substr(at + 13)));
    };
    ASSERT_TRUE(eventually([&] { return !session().empty(); }));
    operate({"ca", "reply", session(), "0", "done"});
    EXPECT_EQ(reported("result", 2), R"(["open","done",0])");
}

TEST_F(TheDrmAgent, HasNoSystemWithoutTheDtvService) {
    run("message");
    reported("before");
    operate({"ca", "insert", "0"});
    EXPECT_EQ(reported("status", 1), "0");
    service.reset();
    EXPECT_EQ(reported("status", 2), "1");
    service = std::make_unique<ServiceProcess>(kRunDirectory + "/broadcast.ts");
    ASSERT_TRUE(browser->says("service: connected", 2));
    operate({"ca", "insert", "1"});
    EXPECT_EQ(reported("status", 3), "0");
}

TEST_F(TheDrmAgent, HasTheSystemsThatTheSetNames) {
    start(broadcastWithEverywhere("drm.html?named"), {"--ca-systems", "4711,0x0B00"});
    EXPECT_EQ(reported("drm"), R"(["urn:dvb:casystemid:4711","urn:dvb:casystemid:2816"])");
    EXPECT_EQ(reported("option"), "[true,true,true]");
    EXPECT_TRUE(browser->reports("result", R"(["other","",5])"));
}

TEST_F(TheDrmAgent, SaysThatThereIsNoSuchSystem) {
    run("refused");
    EXPECT_EQ(reported("sent"), R"(["string","string"])");
    EXPECT_TRUE(browser->reports("result", R"(["other","",5])"));
    EXPECT_TRUE(browser->reports("result", R"(["nobody","",5])"));
}

}  // namespace

}  // namespace browser_tests
