// Which records are wanted.
#include "selection.h"

#include <gtest/gtest.h>

#include "some_seen.h"

using dtvmon::Selection;

TEST(ASelection, WantsAllRecordsUnlessItSaysWhich) {
    EXPECT_TRUE(Selection().wants(aMessage()));
    EXPECT_TRUE(Selection().wants(dtvmon::see(aRecord(bus::Kind::connected))));
}

TEST(ASelection, WantsWhatMatchesOneOfItsNames) {
    const Selection selection{{"on*", "cmdSendPt?Request"}, {}, {}};
    EXPECT_TRUE(selection.wants(aMessage()));
    EXPECT_FALSE(selection.wants(aMessage(kFilterClose, "")));
    EXPECT_TRUE(selection.wants(aMessage(kAitSection, std::string(8, '\0'))));
    EXPECT_FALSE(selection.wants(dtvmon::see(aRecord(bus::Kind::connected))));
}

TEST(ASelection, LeavesOutWhatItDoesNotWantEvenIfItMatches) {
    const Selection selection{{"cmd*"}, {"*Pts*"}, {}};
    EXPECT_FALSE(selection.wants(aMessage()));
    EXPECT_TRUE(selection.wants(aMessage(kFilterClose, "")));
}

TEST(ASelection, MatchesKindsOfRecordsByTheirNames) {
    const Selection selection{{"section_*", "refused"}, {}, {}};
    EXPECT_TRUE(selection.wants(dtvmon::see(aRecord(bus::Kind::sectionQueued))));
    EXPECT_TRUE(selection.wants(dtvmon::see(aRecord(bus::Kind::sectionDropped))));
    EXPECT_TRUE(selection.wants(dtvmon::see(aRecord(bus::Kind::refused, kPtsRequest))));
    EXPECT_FALSE(selection.wants(aMessage()));
    EXPECT_TRUE(
        (Selection{{"cmdSendPtsRequest"}, {}, {}}.wants(dtvmon::see(aRecord(bus::Kind::refused, kPtsRequest)))));
}

TEST(ASelection, WantsTheRecordsOfItsBrowsers) {
    EXPECT_TRUE((Selection{{}, {}, {2, 5}}.wants(aMessage())));
    EXPECT_FALSE((Selection{{}, {}, {1}}.wants(aMessage())));
}

TEST(ASelection, AlwaysWantsToKnowOfALoss) {
    bus::Record lost = aRecord(bus::Kind::lost);
    lost.browser = 0;
    EXPECT_TRUE((Selection{{"on*"}, {"*"}, {1}}.wants(dtvmon::see(lost))));
}
