// Components of the presented service in pages.
#include "object_test.h"

namespace browser_tests {

namespace {

class Components : public AnObject {
protected:
    /// Video, two kinds of audio, subtitles.
    void run(const std::string& what) {
        using Kind = tsmake::Component::Kind;
        tsmake::Multiplex broadcast = kSample;
        std::vector<tsmake::Component>& components = broadcast.services[0].components;
        components.resize(2);
        components.push_back({Kind::audio, 3, "deu"});
        components.push_back({Kind::subtitle, 4, "fra"});
        start(broadcastWithEverywhere("components.html?" + what, broadcast));
    }
};

TEST_F(Components, AreThoseOfThePresentedService) {
    run("list");
    EXPECT_EQ(reported("unrealized"), "0");
    EXPECT_EQ(reported("all"), R"([[1,0,"",false],[2,1,"eng",false],[3,1,"deu",false],[4,2,"fra",false]])");
    EXPECT_EQ(reported("video"), R"([[1,0,"",false]])");
    EXPECT_EQ(reported("active"), R"([[2,1,"eng",false]])");
    EXPECT_EQ(reported("refused"), R"(["TypeError","TypeError","TypeError"])");
}

TEST_F(Components, AreSelectedAndUnselected) {
    run("select");
    EXPECT_EQ(reported("selected"), R"([[3,1,"deu",false]])");
    EXPECT_EQ(reported("unselected"), "[]");
    EXPECT_EQ(reported("again"), R"([[2,1,"eng",false]])");
    EXPECT_EQ(events(3),
              (Events{"SelectedComponentChanged 1", "SelectedComponentChanged 1", "SelectedComponentChanged 1"}));
}

TEST_F(Components, ChangeWithTheChannel) {
    run("changes");
    EXPECT_EQ(reported("now"), R"([[2,1,"eng",false]])");
    EXPECT_EQ(reported("event").rfind("ComponentChanged", 0), 0U);
}

}  // namespace

}  // namespace browser_tests
