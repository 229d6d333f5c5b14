// The null service: every operation fails with its own line.
#include <memory>

#include "empty_service_interface.h"
#include "logged.h"
#include "message_counts.h"
#include "some_values.h"

using namespace lo::browserdvbservice;

namespace {

auto nullService(const std::string& function) {
    return logged::plain(0x5F03E8, "adapter.cpp", function, "Null Service Interface!!!\n");
}

}  // namespace

TEST(TheNullService, RefusesEveryOperationUnderItsOwnName) {
    std::vector<testing::Matcher<const recording::LogLine&>> expected;
    EmptyServiceInterface nullInterface;
    ServiceInterface& service = nullInterface;
    recording::reset();
#define EXPECTED_COMMAND(operation, Message, decimal, hexadecimal, bytes, layout)           \
    EXPECT_EQ(callWithSomeValues(service, &ServiceInterface::operation), -1) << #operation; \
    expected.emplace_back(nullService(#operation));
#include "expected_messages.inc"
    EXPECT_EQ(service.addClient({}), -1);
    expected.emplace_back(nullService("addClient"));
    EXPECT_EQ(service.removeClient({}), -1);
    expected.emplace_back(nullService("removeClient"));
    EXPECT_EQ(expected.size(), kCommands + 2);
    EXPECT_THAT(recording::log(), testing::ElementsAreArray(expected));
    EXPECT_TRUE(recording::sent().empty());
}

TEST(TheNullService, WritesItsLineWhenItGoes) {
    auto nullInterface = std::make_unique<EmptyServiceInterface>();
    recording::reset();
    nullInterface.reset();
    EXPECT_THAT(recording::log(), testing::ElementsAre(nullService("~EmptyServiceInterface")));
}

TEST(TheNullService, WritesItsLineWhenItIsMade) {
    recording::reset();
    const EmptyServiceInterface nullInterface;
    EXPECT_THAT(recording::log(), testing::ElementsAre(nullService("EmptyServiceInterface")));
}

TEST(TheNullService, IsMadeOnceForTheProcess) {
    recording::reset();
    EmptyServiceInterface* const first = EmptyServiceInterface::shared();
    const std::size_t made = recording::log().size();
    EXPECT_LE(made, 1U) << "in a process of its own this test sees the one that is made";
    EXPECT_EQ(EmptyServiceInterface::shared(), first);
    EXPECT_EQ(recording::log().size(), made);
}

TEST(TheNullService, FormatsNoLineWhoseLevelIsOff) {
    EmptyServiceInterface nullInterface;
    recording::reset();
    recording::setLogThreshold(0);
    frame::MsgIds ids;
    EXPECT_EQ(nullInterface.cmdDtvInfoRequest(ids, {}), -1);
    EXPECT_EQ(recording::levelChecks(), 1U);
    EXPECT_EQ(recording::formattedLines(), 0U);
}
