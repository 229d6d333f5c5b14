// Tests of browsers that connect while a service is presented.
#include "running_set.h"

namespace {

using dtvservice::Commands;

constexpr dtvservice::Browser kFirst = 1;
constexpr dtvservice::Browser kSecond = 2;
const std::string kAcquired = "onAcquireDtvServiceInfo(" + shownValue(std::string("1:1025:28106")) + ")";

class ABrowserThatJoins : public ARunningSet {
protected:
    /// The events of a tune, without the first one that names the service.
    Texts tunedTo(unsigned int sid) {
        heard.take(kFirst);
        tune(kFirst, sid);
        Texts texts = heard.take(kFirst);
        EXPECT_THAT(texts.front(), testing::StartsWith("onServiceChanged("));
        texts.erase(texts.begin());
        return texts;
    }
};

}  // namespace

TEST_F(ABrowserThatJoins, GetsTheEventsOfATuneInTheSameOrder) {
    play(sample);
    join(kFirst);
    Texts expected = tunedTo(28106);
    for (const char* const event :
         {"onPmtDataChange", "onComponentInfoChange", "onSelectedComponentChange", "onEitDataChange",
          "onAitChannelInfoUpdated", "onAitSectionAvailable", "onAitInfoAvailable", "onAitParsingStateChanged"}) {
        EXPECT_THAT(expected, hears(event));
    }
    expected.insert(expected.begin(), kAcquired);
    join(kSecond);
    EXPECT_EQ(heard.take(kSecond), expected);
    EXPECT_THAT(heard.take(kFirst), testing::IsEmpty()) << "it knows all that";
}

TEST_F(ABrowserThatJoins, GetsThemAgainWhenItHasStarted) {
    play(sample);
    join(kFirst);
    join(kSecond);
    Texts expected = tunedTo(28106);
    expected.insert(expected.begin(), kAcquired);
    heard.take(kSecond);
    sends(kSecond, &Commands::cmdSendPMTCache);
    EXPECT_EQ(heard.take(kSecond), expected);
    EXPECT_THAT(heard.take(kFirst), testing::IsEmpty());
}

TEST_F(ABrowserThatJoins, GetsNothingIfNothingIsPresented) {
    join(kFirst);
    sends(kFirst, &Commands::cmdSendPMTCache);
    EXPECT_THAT(heard.take(kFirst), testing::IsEmpty());
    play(sample);
    const Texts texts = heard.take(kFirst);
    EXPECT_EQ(std::count_if(texts.begin(), texts.end(),
                            [](const std::string& text) { return text.compare(0, 16, "onPmtDataChange(") == 0; }),
              1)
        << "each once, when it comes";
}

TEST_F(ABrowserThatJoins, IsToldWhichComponentsAreSelected) {
    play(sample);
    join(kFirst);
    sends(kFirst, &Commands::cmdUnselectComponent, lo::browserdvbservice::ComponentTypeAudio);
    join(kSecond);
    const Texts texts = heard.take(kSecond);
    EXPECT_THAT(texts, testing::Contains(testing::StartsWith("onSelectedComponentChange(0, 0, ")));
    EXPECT_THAT(texts, testing::Not(testing::Contains(testing::StartsWith("onSelectedComponentChange(1, 1, "))));
}
