// Which services a demonstration shows.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "demo.h"

namespace {

using namespace dvbshell;

std::vector<ListedService> listedIn(const std::string& text) {
    std::vector<ListedService> listed;
    std::string error;
    EXPECT_TRUE(parseServiceList(text, listed, error)) << error;
    return listed;
}

std::vector<std::string> namesOf(const std::vector<ListedService>& services) {
    std::vector<std::string> names;
    for (const ListedService& service : services) {
        names.push_back(service.name);
    }
    return names;
}

std::vector<std::string> reasonsOf(const DemoPlan& plan) {
    std::vector<std::string> reasons;
    for (const DemoPlan::LeftOut& each : plan.leftOut) {
        reasons.push_back(each.service.name + ": " + each.reason);
    }
    return reasons;
}

const char* const kSix =
    "1:1:1\tnopmt\tno-hbbtv\ta\n1:1:2\tpmt\tno-hbbtv\tb\n1:1:3\tpmt\thbbtv\tc\n1:1:4\tpmt\tno-hbbtv\td\n"
    "1:1:5\tpmt\tno-hbbtv\te\n65535:1:6\tpmt\tno-hbbtv\tf\n";

}  // namespace

TEST(AServiceList, IsReadAsTheServiceWritesIt) {
    std::vector<ListedService> services;
    std::string error;
    ASSERT_TRUE(parseServiceList("1:2:3\tpmt\thbbtv\tA name\n0:2:4\tnopmt\tno-hbbtv\t\n", services, error)) << error;
    ASSERT_EQ(services.size(), 2U);
    EXPECT_TRUE(services[0].hasPmt && services[0].signalsAit);
    EXPECT_EQ(services[0].name, "A name");
    EXPECT_FALSE(services[1].hasPmt || services[1].signalsAit);
    EXPECT_FALSE(parseServiceList("1:2\tpmt\thbbtv\tx\n", services, error));
    EXPECT_EQ(error, "\"1:2\tpmt\thbbtv\tx\" is no line of a service list");
}

TEST(ADemoPlan, PrefersServicesWithApplications) {
    const DemoPlan plan = planDemo(listedIn(
        "1:1:1\tnopmt\tno-hbbtv\ta\n1:1:2\tpmt\tno-hbbtv\tb\n1:1:3\tpmt\thbbtv\tc\n1:1:4\tnopmt\tno-hbbtv\td\n"));
    EXPECT_THAT(namesOf(plan.shown), testing::ElementsAre("c", "b", "a"));
    EXPECT_THAT(reasonsOf(plan), testing::ElementsAre("d: its PMT is not in this broadcast"));
}

TEST(ADemoPlan, HasFourServicesAtMost) {
    const DemoPlan plan = planDemo(listedIn(kSix));
    EXPECT_THAT(namesOf(plan.shown), testing::ElementsAre("c", "b", "d", "e"));
    EXPECT_THAT(reasonsOf(plan), testing::ElementsAre("a: its PMT is not in this broadcast", "f: enough others"));
}

TEST(ADemoPlan, TakesTheServicesThatTheUserWants) {
    DemoPlan plan;
    std::string error;
    ASSERT_TRUE(planDemo(listedIn(kSix), {{1, 1, 4}, {65535, 1, 2}, {9, 1, 6}}, plan, error)) << error;
    EXPECT_THAT(namesOf(plan.shown), testing::ElementsAre("d", "b", "f"));
    EXPECT_THAT(reasonsOf(plan), testing::ElementsAre("a: not chosen", "c: not chosen", "e: not chosen"));
    EXPECT_FALSE(plan.anyAitExpected);
}

TEST(ADemoPlan, NamesAServiceThatTheBroadcastLacks) {
    DemoPlan plan;
    std::string error;
    EXPECT_FALSE(planDemo(listedIn(kSix), {{2, 1, 4}}, plan, error));
    EXPECT_EQ(error, "the broadcast has no service 2:1:4");
}
