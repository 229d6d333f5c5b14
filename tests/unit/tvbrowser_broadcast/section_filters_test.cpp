// Section filters that stay open.
#include "section_filters.h"

#include "fake_filters.h"
#include "made_tables.h"

using tvbrowser::SectionFilters;
using Repetitions = SectionFilters::Repetitions;

namespace {

const Section kPat = tsmake::patSection(kSample);

class TheSectionFilters : public testing::Test {
protected:
    SectionFilters::Id openPat(Repetitions repetitions = Repetitions::taken) {
        return filters.open(0, SectionFilters::Pattern::table(0), repetitions, [this](si::Bytes section) {
            EXPECT_EQ(section.size, kPat.size());
            ++received;
        });
    }
    bool areOpen(std::size_t count) {
        return eventually([&] { return interface.openCount() == count; });
    }
    void deliver() {
        interface.deliver(0, kPat);
        tasks.run();
    }

    FakeFilters& interface = newFakeFilters();
    Tasks tasks;
    SectionFilters filters{interface, tasks.post()};
    int received = 0;
};

}  // namespace

TEST_F(TheSectionFilters, OpenWhenTheServiceIsThereAndCloseWhenAsked) {
    const SectionFilters::Id first = openPat();
    EXPECT_EQ(interface.openCount(), 0U);
    filters.onConnected();
    ASSERT_TRUE(areOpen(1));
    openPat();
    ASSERT_TRUE(areOpen(2));
    deliver();
    EXPECT_EQ(received, 2);
    filters.close(first);
    ASSERT_TRUE(areOpen(1));
    deliver();
    EXPECT_EQ(received, 3);
    filters.onGone();
    EXPECT_TRUE(areOpen(0));
}

TEST_F(TheSectionFilters, SkipRepetitionsUntilTheyAreOpenedAnew) {
    openPat(Repetitions::skipped);
    filters.onConnected();
    ASSERT_TRUE(areOpen(1));
    deliver();
    deliver();
    EXPECT_EQ(received, 1);
    filters.renew();
    ASSERT_TRUE(eventually([&] { return interface.starts == 2; }));
    ASSERT_TRUE(areOpen(1));
    deliver();
    EXPECT_EQ(received, 2);
}

TEST_F(TheSectionFilters, DropSectionsOfTheTimeBeforeTheyWereOpenedAnew) {
    openPat();
    filters.onConnected();
    ASSERT_TRUE(areOpen(1));
    interface.deliver(0, kPat);
    filters.renew();
    tasks.run();
    EXPECT_EQ(received, 0);
}

TEST_F(TheSectionFilters, AreTriedAgainWhenTheyWereRefused) {
    interface.refuses = true;
    openPat();
    filters.onConnected();
    ASSERT_TRUE(eventually([&] { return interface.starts == 1; }));
    interface.refuses = false;
    EXPECT_TRUE(eventually([&] {
        filters.retry();
        return interface.openCount() == 1;
    }));
    EXPECT_EQ(interface.starts, 2U);
}

TEST_F(TheSectionFilters, DoNotWaitForAServiceThatHasGone) {
    interface.hangs = true;
    openPat();
    filters.onConnected();
    filters.onGone();
    filters.onConnected();
    interface.hangs = false;
    EXPECT_TRUE(areOpen(1));
    deliver();
    EXPECT_EQ(received, 1);
}

TEST_F(TheSectionFilters, KeepNoMoreForTheLoopThanTheirLimit) {
    openPat();
    filters.onConnected();
    ASSERT_TRUE(areOpen(1));
    const std::size_t most = tvbrowser::SectionInbox::kMostWaiting / kPat.size();
    for (std::size_t count = 0; count < most + 10; ++count) {
        interface.deliver(0, kPat);
    }
    tasks.run();
    EXPECT_EQ(received, static_cast<int>(most));
    deliver();
    EXPECT_EQ(received, static_cast<int>(most) + 1);
}

TEST_F(TheSectionFilters, MayBeClosedByTheirReceiver) {
    SectionFilters::Id id = 0;
    id = filters.open(0, SectionFilters::Pattern::table(0), Repetitions::taken, [&](si::Bytes) {
        filters.close(id);
        ++received;
    });
    filters.onConnected();
    ASSERT_TRUE(areOpen(1));
    interface.deliver(0, kPat);
    interface.deliver(0, kPat);
    tasks.run();
    EXPECT_EQ(received, 1);
    EXPECT_TRUE(areOpen(0));
}
