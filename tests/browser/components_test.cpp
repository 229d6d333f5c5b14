// Components of the presented service in pages.
#include "changed_sections.h"
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

/// An ISO_639_language_descriptor.
std::string languageDescriptor(const std::string& language, char audioType) {
    return "\x0A\x04" + language + audioType;
}

/// Makes the PMT say what tsmake does not: commentary for people who do not see well, AC-3 with more than two channels,
/// subtitles for people who do not hear well.
void describe(std::string& pmt) {
    constexpr char kCommentary = 3;
    const std::string ac3("\x6A\x04\x80\x44\0\0", 6);
    replaceIn(pmt, languageDescriptor("deu", 0), languageDescriptor("deu", kCommentary));
    replaceIn(pmt, languageDescriptor("fra", 0), ac3);
    replaceIn(pmt, "fra\x10", "fra\x20");
    constexpr std::size_t kFromTypeToIt = 8;  // stream_type, PID, length, and the descriptor of the tag
    constexpr char kPesPrivate = 6;
    const std::size_t at = pmt.find(ac3);
    if (at != std::string::npos) {
        pmt[at - kFromTypeToIt] = kPesPrivate;
    }
}

TEST_F(Components, HaveTheFieldsThatPmtAndEitTell) {
    using Kind = tsmake::Component::Kind;
    tsmake::Multiplex broadcast = broadcastWithEverywhere("components.html?fields");
    tsmake::Service& first = broadcast.services[0];
    first.components = {{Kind::video, 1, ""},    {Kind::audio, 2, "eng"},    {Kind::audio, 3, "deu"},
                        {Kind::audio, 4, "fra"}, {Kind::subtitle, 5, "fra"}, {Kind::subtitle, 6, "eng"}};
    // Video in 16:9, stereo.
    first.events[0].components = {{5, 3, 1, "eng", ""}, {2, 3, 2, "eng", ""}};
    constexpr std::uint8_t kPmt = 0x02;
    startPackets(withChangedSections(fileText(writeBroadcast(broadcast, 20, "plain.ts")), kPmt, describe));
    EXPECT_TRUE(browser->reports(
        "fields",
        "type 0, componentTag 1, encoding video/mp4, aspectRatio 1.78; "
        "type 1, componentTag 2, encoding audio/mpeg, language eng, audioChannels 2, audioDescription false; "
        "type 1, componentTag 3, encoding audio/mpeg, language deu, audioChannels 0, audioDescription true; "
        "type 1, componentTag 4, encoding audio/ac3, audioChannels 6, audioDescription false; "
        "type 2, componentTag 5, language fra, hearingImpaired true; "
        "type 2, componentTag 6, language eng, hearingImpaired false"));
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
