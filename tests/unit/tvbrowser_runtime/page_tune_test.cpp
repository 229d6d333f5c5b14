// Tunes of the page of a broadcast-independent application, whose requests and outcomes come in either order.
#include "a_terminal.h"
#include "si/tables.h"

namespace tvbrowser {

constexpr si::Triplet kThree{1, 1025, 3};

/// Application A runs independently of the broadcast; channel three, without applications, is presented.
class ATuneOfAPage : public ATerminal {
protected:
    ATuneOfAPage() {
        present(kThree, {});
        runIndependent(kUrlA);
    }
    void presentWithA(const si::Triplet& channel) { present(channel, {signalled(kA, ControlCode::present)}); }
    bool isRelated() const { return manager.running()->isBroadcastRelated; }
};

TEST_F(ATuneOfAPage, JoinsWhenItsOutcomeComesAfterIt) {
    manager.tuneRequested(1, kOne);
    manager.channelChanged(true, kOne);
    EXPECT_FALSE(isRelated());
    manager.aitReceived({signalled(kA, ControlCode::present)});
    EXPECT_THAT(host.news(), are("changed visible related"));
}

TEST_F(ATuneOfAPage, JoinsWhenItsOutcomeCameBeforeIt) {
    manager.channelChanged(true, kOne);
    manager.tuneRequested(1, kOne);
    EXPECT_FALSE(isRelated());
    manager.aitReceived({signalled(kA, ControlCode::present)});
    EXPECT_THAT(host.news(), are("changed visible related"));
}

TEST_F(ATuneOfAPage, JoinsWhenItsOutcomeAndTheAitCameBeforeIt) {
    presentWithA(kOne);
    EXPECT_FALSE(isRelated());
    manager.tuneRequested(1, kOne);
    EXPECT_THAT(host.news(), are("changed visible related"));
}

TEST_F(ATuneOfAPage, ByADeliverySystemJoinsInEitherOrder) {
    manager.tuneRequested(1, std::nullopt);
    EXPECT_FALSE(isRelated());
    presentWithA(kOne);
    EXPECT_TRUE(isRelated());
    manager.becomeIndependent(1);
    presentWithA(kTwo);
    EXPECT_FALSE(isRelated());
    manager.tuneRequested(1, std::nullopt);
    EXPECT_TRUE(isRelated());
}

TEST_F(ATuneOfAPage, ByADeliverySystemDoesNotCountTheFirstChannelAsItsOutcome) {
    RecordingHost other;
    ApplicationManager early(other);
    early.startIndependent(kUrlA);
    early.channelChanged(true, kOne);
    early.aitReceived({signalled(kA, ControlCode::present)});
    early.tuneRequested(1, std::nullopt);
    EXPECT_FALSE(early.running()->isBroadcastRelated);
}

TEST_F(ATuneOfAPage, ByADeliverySystemDoesNotCountWhatTheRelatedApplicationDid) {
    manager.tuneRequested(1, kOne);
    presentWithA(kOne);
    presentWithA(kTwo);
    ASSERT_TRUE(isRelated());
    manager.becomeIndependent(1);
    manager.tuneRequested(1, std::nullopt);
    EXPECT_FALSE(isRelated());
}

TEST_F(ATuneOfAPage, ByADeliverySystemDoesNotCountTheViewersZap) {
    press("CHANNEL_UP");
    manager.tuneRequested(1, std::nullopt);
    presentWithA(kOne);
    EXPECT_FALSE(isRelated());
    presentWithA(kTwo);
    EXPECT_TRUE(isRelated());
    manager.becomeIndependent(1);
    press("CHANNEL_DOWN");
    presentWithA(kOne);
    manager.tuneRequested(1, std::nullopt);
    EXPECT_FALSE(isRelated());
}

TEST_F(ATuneOfAPage, JoinsNoOtherChannelThanItsTarget) {
    manager.tuneRequested(1, kOne);
    presentWithA(kTwo);
    EXPECT_FALSE(isRelated());
    presentWithA(kOne);
    EXPECT_TRUE(isRelated());
}

TEST_F(ATuneOfAPage, DoesNotCountWhereAnotherChannelComesBeforeTheAit) {
    manager.tuneRequested(1, kOne);
    manager.channelChanged(true, kOne);
    presentWithA(kTwo);
    EXPECT_FALSE(isRelated());
}

TEST_F(ATuneOfAPage, IsReplacedByTheNextOne) {
    manager.tuneRequested(1, kOne);
    manager.tuneRequested(1, kTwo);
    presentWithA(kOne);
    EXPECT_FALSE(isRelated());
    presentWithA(kTwo);
    EXPECT_TRUE(isRelated());
}

TEST_F(ATuneOfAPage, ThatFailedOrWasNeverMadeDoesNotJoinAtTheViewersZap) {
    for (const std::optional<si::Triplet>& target : {std::optional<si::Triplet>(kOne), std::optional<si::Triplet>()}) {
        manager.tuneRequested(1, target);
        press("CHANNEL_UP");
        presentWithA(kOne);
        EXPECT_FALSE(isRelated());
        present(kThree, {});
    }
}

TEST_F(ATuneOfAPage, ThatIsHeardToFailDoesNotJoin) {
    manager.tuneRequested(1, kOne);
    manager.channelChanged(false, kThree);
    presentWithA(kOne);
    EXPECT_FALSE(isRelated());
}

TEST_F(ATuneOfAPage, OutlastsTheViewersZapThatFailed) {
    press("CHANNEL_UP");
    manager.tuneRequested(1, kOne);
    manager.channelChanged(false, kThree);
    presentWithA(kOne);
    EXPECT_TRUE(isRelated());
}

TEST_F(ATuneOfAPage, LeadsToItsChannelWhileTheNetworkIsUnknown) {
    manager.tuneRequested(1, kOne);
    presentWithA({si::kUnknownNetworkId, kOne.tsid, kOne.sid});
    EXPECT_TRUE(isRelated());
}

}  // namespace tvbrowser
