// Tests of the browsers' state that the service keeps for the operator.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drm_messages.h"
#include "osd_followers.h"

namespace {

using dtvservice::DrmMessages;
using dtvservice::OsdFollowers;

}  // namespace

TEST(TheOsdFollowers, AreThoseThatAskedForTheLayer) {
    OsdFollowers followers;
    EXPECT_TRUE(followers.add(1, 3));
    EXPECT_TRUE(followers.add(2, 3));
    EXPECT_TRUE(followers.add(2, 4));
    EXPECT_THAT(followers.followersOf(3), testing::ElementsAre(1, 2));
    followers.remove(2, 3);
    EXPECT_THAT(followers.followersOf(3), testing::ElementsAre(1));
    EXPECT_THAT(followers.followersOf(4), testing::ElementsAre(2));
    EXPECT_THAT(followers.followersOf(5), testing::IsEmpty());
}

TEST(TheOsdFollowers, AreForgottenWithoutLayers) {
    OsdFollowers followers;
    for (std::uint32_t layer = 0; layer < 1000; ++layer) {
        followers.remove(1, layer);
    }
    EXPECT_TRUE(followers.isEmpty()) << "it has never followed one";
    followers.add(1, 3);
    followers.remove(1, 3);
    EXPECT_TRUE(followers.isEmpty());
    followers.add(1, 3);
    followers.add(1, 4);
    followers.forget(1);
    EXPECT_TRUE(followers.isEmpty());
}

TEST(TheOsdFollowers, AreRefusedTooManyLayers) {
    OsdFollowers followers;
    for (std::uint32_t layer = 0; layer < OsdFollowers::kMostLayers; ++layer) {
        EXPECT_TRUE(followers.add(1, layer));
    }
    EXPECT_FALSE(followers.add(1, 1000));
    EXPECT_THAT(followers.followersOf(1000), testing::IsEmpty());
    EXPECT_TRUE(followers.add(1, 5)) << "that one already";
    EXPECT_TRUE(followers.add(2, 1000)) << "each browser by itself";
    followers.remove(1, 5);
    EXPECT_TRUE(followers.add(1, 1000));
}

TEST(AWaitingDrmMessage, IsTakenOldestFirst) {
    DrmMessages messages;
    EXPECT_TRUE(messages.add({1, 77, 0, "a", "first"}));
    EXPECT_TRUE(messages.add({2, 77, 0, "a", "second"}));
    EXPECT_EQ(messages.take(78), std::nullopt);
    EXPECT_EQ(messages.take(77)->text, "first");
    messages.forget(2);
    EXPECT_EQ(messages.take(77), std::nullopt);
}

TEST(AWaitingDrmMessage, IsRefusedAboveTheNumberLimit) {
    DrmMessages messages;
    for (std::uint64_t session = 0; session < DrmMessages::kMostMessages; ++session) {
        EXPECT_TRUE(messages.add({1, session, 0, "", ""}));
    }
    EXPECT_FALSE(messages.add({1, 100, 0, "", ""}));
    EXPECT_TRUE(messages.add({2, 100, 0, "", ""})) << "each browser by itself";
    EXPECT_EQ(messages.all().size(), DrmMessages::kMostMessages + 1);
    messages.take(5);
    EXPECT_TRUE(messages.add({1, 100, 0, "", ""}));
}

TEST(AWaitingDrmMessage, IsRefusedAboveTheTextLimit) {
    DrmMessages messages;
    const std::string half(DrmMessages::kMostText / 2, 'x');
    EXPECT_TRUE(messages.add({1, 1, 0, half, ""}));
    EXPECT_TRUE(messages.add({1, 2, 0, "", half}));
    EXPECT_FALSE(messages.add({1, 3, 0, "x", ""}));
    EXPECT_TRUE(messages.add({1, 4, 0, "", ""}));
    EXPECT_TRUE(messages.add({2, 5, 0, half, half}));
    messages.take(1);
    EXPECT_TRUE(messages.add({1, 3, 0, "x", ""}));
}
