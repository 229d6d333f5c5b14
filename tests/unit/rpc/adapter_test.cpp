// The client adapter and the null service.
#include <boost/smart_ptr/bad_weak_ptr.hpp>
#include <boost/weak_ptr.hpp>

#include "adapter.h"
#include "app-browserdvbservice-proxy-main.h"
#include "empty_service_interface.h"
#include "inject_event.h"
#include "logged.h"
#include "seams.h"
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

/// A service that returns what the test sets and records who registered.
class AnsweringService : public EmptyServiceInterface {
public:
    int answer = 0;
    std::vector<std::string> calls;
    std::vector<ClientInterface*> clients;
    int addClient(boost::shared_ptr<ClientInterface> client) override { return keep("add", client); }
    int removeClient(boost::shared_ptr<ClientInterface> client) override { return keep("remove", client); }

private:
    int keep(const std::string& call, const boost::shared_ptr<ClientInterface>& client) {
        calls.push_back(call + " after " + std::to_string(linesOfAdapter().size()) + " lines");
        clients.push_back(client.get());
        return answer;
    }
};

class AnAdapter : public testing::Test {
protected:
    AnAdapter() {
        seams::reset();
        recording::reset();
    }
    ~AnAdapter() override {
        seams::reset();
        frame::Process::getInstance().stopAppMembers();
    }

    /// Publishes this service under the interface's name; `answer` is the result of the look-up.
    static void publish(ServiceInterface* service, int answer = 0) {
        seams::setLookUp([=](boost::shared_ptr<frame::Interface>& reference, const std::string& name) {
            EXPECT_EQ(name, "tarno.lm.interfaces.browserdvbservice");
            EXPECT_THAT(linesOfAdapter(), testing::SizeIs(1)) << "the first line comes before the look-up";
            reference.reset(new frame::Interface(name, service));
            return answer;
        });
    }

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

TEST_F(AnAdapter, FailsToStartWithoutTheInterface) {
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

TEST_F(AnAdapter, StopsAtTheNullServiceWithoutStart) {
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

TEST_F(AnAdapter, LogsItsConstructionAndDestruction) {
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

TEST_F(AnAdapter, RegistersBetweenItsSecondAndThirdLine) {
    AnsweringService service;
    publish(&service);
    recording::reset();
    EXPECT_EQ(adapter->start(), 0);
    EXPECT_THAT(recording::log(), testing::ElementsAre(called("start"), called("start"), called("start")));
    EXPECT_THAT(service.calls, testing::ElementsAre("add after 2 lines"));
    EXPECT_THAT(service.clients, testing::ElementsAre(adapter.get()));
    EXPECT_EQ(adapter->getServiceInterface(), &service);
}

TEST_F(AnAdapter, StartsWhateverTheServiceAnswersToItsRegistration) {
    AnsweringService service;
    publish(&service);
    for (const int answer : {-17, -2, 5}) {
        service.answer = answer;
        recording::reset();
        EXPECT_EQ(adapter->start(), 0) << answer;
        EXPECT_THAT(recording::log(), testing::ElementsAre(called("start"), called("start"), called("start")));
        EXPECT_EQ(adapter->getServiceInterface(), &service);
    }
}

TEST_F(AnAdapter, AcceptsAPositiveLookUpResult) {
    AnsweringService service;
    publish(&service, 7);
    recording::reset();
    EXPECT_EQ(adapter->start(), 0);
    EXPECT_THAT(recording::log(), testing::ElementsAre(called("start"), called("start"), called("start")));
    EXPECT_EQ(adapter->getServiceInterface(), &service);
}

TEST_F(AnAdapter, FailsWhenTheLookUpFailsWithAReference) {
    AnsweringService service;
    publish(&service, -3);
    recording::reset();
    EXPECT_EQ(adapter->start(), -1);
    EXPECT_THAT(recording::log(),
                testing::ElementsAre(called("start"), logged::plain(0x5F03E8, kFile, "start",
                                                                    "Getting browserdvbservice interface failed!\n")));
    EXPECT_THAT(service.calls, testing::IsEmpty());
    EXPECT_NE(adapter->getServiceInterface(), &service);
}

TEST_F(AnAdapter, FailsSilentlyWhenTheInterfaceHoldsNoService) {
    publish(nullptr);
    recording::reset();
    EXPECT_EQ(adapter->start(), -1);
    EXPECT_THAT(recording::log(), testing::ElementsAre(called("start")));
    EXPECT_NE(dynamic_cast<EmptyServiceInterface*>(adapter->getServiceInterface()), nullptr);
}

TEST_F(AnAdapter, FailsSilentlyWhenTheLookUpGivesNoInterface) {
    seams::setLookUp([](boost::shared_ptr<frame::Interface>&, const std::string&) { return 0; });
    recording::reset();
    EXPECT_EQ(adapter->start(), -1);
    EXPECT_THAT(recording::log(), testing::ElementsAre(called("start")));
    EXPECT_NE(dynamic_cast<EmptyServiceInterface*>(adapter->getServiceInterface()), nullptr);
}

TEST_F(AnAdapter, SendsToTheNullServiceAfterTheProxysEnd) {
    startProxy();
    ASSERT_EQ(adapter->start(), 0);
    frame::Process::getInstance().stopAppMembers();
    EXPECT_NE(dynamic_cast<EmptyServiceInterface*>(adapter->getServiceInterface()), nullptr);
    recording::reset();
    frame::MsgIds ids;
    EXPECT_EQ(Adapter::Command(*adapter)->cmdDtvInfoRequest(ids, {}), -1);
    EXPECT_THAT(recording::log(), testing::ElementsAre(nullService("cmdDtvInfoRequest")));
    EXPECT_EQ(adapter->stop(), 0);
    EXPECT_TRUE(recording::sent().empty());
}

TEST_F(AnAdapter, FindsASecondProxy) {
    startProxy();
    ASSERT_EQ(adapter->start(), 0);
    frame::Process::getInstance().stopAppMembers();
    startProxy();
    ASSERT_EQ(adapter->start(), 0);
    frame::MsgIds ids;
    EXPECT_EQ(Adapter::Command(*adapter)->cmdDtvInfoRequest(ids, {}), 0);
}

TEST_F(AnAdapter, HoldsTheInterfaceAsLongAsItLives) {
    AnsweringService service;
    boost::weak_ptr<frame::Interface> observed;
    seams::setLookUp([&](boost::shared_ptr<frame::Interface>& reference, const std::string& name) {
        reference.reset(new frame::Interface(name, &service));
        observed = reference;
        return 0;
    });
    ASSERT_EQ(adapter->start(), 0);
    EXPECT_EQ(adapter->stop(), 0);
    EXPECT_FALSE(observed.expired()) << "stopped, it still sends to the service";
    EXPECT_EQ(adapter->getServiceInterface(), &service);
    adapter.reset();
    EXPECT_TRUE(observed.expired());
}

TEST_F(AnAdapter, StopsWhateverTheServiceAnswersToItsRemoval) {
    AnsweringService service;
    publish(&service);
    recording::reset();
    ASSERT_EQ(adapter->start(), 0);
    service.calls.clear();
    service.clients.clear();
    for (const int answer : {-2, 5}) {
        service.answer = answer;
        recording::reset();
        EXPECT_EQ(adapter->stop(), 0) << answer;
        EXPECT_THAT(recording::log(), testing::ElementsAre(called("stop")));
    }
    EXPECT_THAT(service.calls, testing::ElementsAre("remove after 1 lines", "remove after 1 lines"));
    EXPECT_THAT(service.clients, testing::Each(adapter.get()));
}

TEST_F(AnAdapter, StopsAtTheNullServiceAfterAFailedStart) {
    ASSERT_EQ(adapter->start(), -1);
    adapter->getServiceInterface();
    recording::reset();
    EXPECT_EQ(adapter->stop(), 0);
    EXPECT_THAT(recording::log(), testing::ElementsAre(called("stop"), nullService("removeClient")));
}

TEST_F(AnAdapter, FormatsNoLineWhoseLevelIsOff) {
    AnsweringService service;
    seams::setLookUp([&service](boost::shared_ptr<frame::Interface>& reference, const std::string& name) {
        reference.reset(new frame::Interface(name, &service));
        return 0;
    });
    recording::reset();
    recording::setLogThreshold(0);
    adapter->start();
    adapter->stop();
    EXPECT_EQ(recording::levelChecks(), 4U);
    EXPECT_EQ(recording::formattedLines(), 0U);
}
