// The client adapter and the null service.
#include <boost/smart_ptr/bad_weak_ptr.hpp>

#include "adapter.h"
#include "app-browserdvbservice-proxy-main.h"
#include "empty_service_interface.h"
#include "inject_event.h"
#include "logged.h"
#include "some_values.h"

using namespace lo::browserdvbservice;

namespace {

constexpr const char* kFile = "adapter.cpp";

auto called(const std::string& function) {
    return logged::plain(0x5F0FA0, kFile, function, "called.\n");
}

auto nullService(const std::string& function) {
    return logged::plain(0x5F03E8, kFile, function, "Null Service Interface!!!\n");
}

std::vector<recording::LogLine> linesOfAdapter() {
    std::vector<recording::LogLine> lines;
    for (const recording::LogLine& line : recording::log()) {
        if (line.file == kFile) {
            lines.push_back(line);
        }
    }
    return lines;
}

class AnAdapter : public testing::Test {
protected:
    AnAdapter() { recording::reset(); }
    ~AnAdapter() override { frame::Process::getInstance().stopAppMembers(); }

    static void startProxy() {
        ASSERT_EQ(frame::Process::getInstance().startAppMembersSync(CreateBrowserDvbServiceProxy), 0);
        recording::reset();
    }

    boost::shared_ptr<Adapter> adapter{new Adapter};
};

}  // namespace

TEST_F(AnAdapter, SendsToTheNullServiceBeforeItIsStarted) {
    recording::reset();
    frame::MsgIds ids;
    EXPECT_EQ(adapter->getServiceInterface()->cmdDtvInfoRequest(ids, {}), -1);
    EXPECT_THAT(recording::log(),
                testing::ElementsAre(nullService("EmptyServiceInterface"), nullService("cmdDtvInfoRequest")));
}

TEST_F(AnAdapter, SharesOneNullServiceWithAllOthers) {
    const boost::shared_ptr<Adapter> other(new Adapter);
    ServiceInterface* const nullInterface = adapter->getServiceInterface();
    recording::reset();
    EXPECT_EQ(other->getServiceInterface(), nullInterface);
    EXPECT_EQ(adapter->getServiceInterface(), nullInterface);
    EXPECT_TRUE(recording::log().empty());
}

TEST_F(AnAdapter, FailsToStartWhenTheProcessDoesNotKnowTheInterface) {
    recording::reset();
    EXPECT_EQ(adapter->start(), -1);
    EXPECT_THAT(recording::log(),
                testing::ElementsAre(called("start"), logged::plain(0x5F03E8, kFile, "start",
                                                                    "Getting browserdvbservice interface failed!\n")));
    frame::MsgIds ids;
    EXPECT_EQ(adapter->getServiceInterface()->cmdDtvInfoRequest(ids, {}), -1);
}

TEST_F(AnAdapter, RegistersItselfWithTheProxyWhenItIsStarted) {
    startProxy();
    EXPECT_EQ(adapter->start(), 0);
    EXPECT_THAT(linesOfAdapter(), testing::ElementsAre(called("start"), called("start"), called("start")));
    EXPECT_THAT(recording::logOf("addClient"), testing::SizeIs(1));
    frame::MsgIds ids;
    EXPECT_EQ(adapter->getServiceInterface()->cmdDtvInfoRequest(ids, {}), 0);
    EXPECT_EQ(adapter->getServiceInterface()->addClient(adapter), -17);
}

TEST_F(AnAdapter, IgnoresTheProxysRefusalWhenItIsStartedTwice) {
    startProxy();
    EXPECT_EQ(adapter->start(), 0);
    EXPECT_EQ(adapter->start(), 0);
}

TEST_F(AnAdapter, ThrowsFromStartWhenNobodyOwnsIt) {
    startProxy();
    Adapter unowned;
    EXPECT_THROW(unowned.start(), boost::bad_weak_ptr);
}

TEST_F(AnAdapter, LeavesTheProxyWhenItIsStopped) {
    startProxy();
    adapter->start();
    recording::reset();
    EXPECT_EQ(adapter->stop(), 0);
    EXPECT_THAT(linesOfAdapter(), testing::ElementsAre(called("stop")));
    EXPECT_EQ(adapter->getServiceInterface()->removeClient(adapter), -2);
}

TEST_F(AnAdapter, StopsAtTheNullServiceWhenItWasNeverStarted) {
    adapter->getServiceInterface();
    recording::reset();
    EXPECT_EQ(adapter->stop(), 0);
    EXPECT_THAT(recording::log(), testing::ElementsAre(called("stop"), nullService("removeClient")));
}

TEST_F(AnAdapter, SkipsTheRemovalWhenNobodyOwnsIt) {
    Adapter unowned;
    recording::reset();
    EXPECT_EQ(unowned.stop(), 0);
    EXPECT_THAT(recording::log(), testing::ElementsAre(called("stop")));
}

TEST_F(AnAdapter, WritesALineWhenItIsMadeAndWhenItGoes) {
    recording::reset();
    { const Adapter unowned; }
    EXPECT_THAT(recording::log(), testing::ElementsAre(called("Adapter"), called("~Adapter")));
}

TEST_F(AnAdapter, TakesEveryEventWithoutEffect) {
    recording::reset();
#define EXPECTED_EVENT(operation, Message, decimal, hexadecimal, bytes, layout) \
    EXPECT_EQ(callWithSomeValues<ClientInterface>(*adapter, &ClientInterface::operation), 0) << #operation;
#include "expected_messages.inc"
    EXPECT_TRUE(recording::log().empty());
    EXPECT_TRUE(recording::sent().empty());
}

TEST(TheNullService, RefusesEveryOperationUnderItsOwnName) {
    std::vector<testing::Matcher<recording::LogLine>> expected;
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
    EXPECT_EQ(expected.size(), 31U);
    EXPECT_THAT(recording::log(), testing::ElementsAreArray(expected));
    EXPECT_TRUE(recording::sent().empty());
}

TEST(TheNullService, WritesItsLineWhenItGoes) {
    auto nullInterface = std::make_unique<EmptyServiceInterface>();
    recording::reset();
    nullInterface.reset();
    EXPECT_THAT(recording::log(), testing::ElementsAre(nullService("~EmptyServiceInterface")));
}
