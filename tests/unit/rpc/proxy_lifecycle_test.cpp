// The proxy as a member of the process: hooks, handler registration, setup, start, stop, destruction.
#include <cstdlib>

#include "message_counts.h"
#include "proxy_fixture.h"

using lo::browserdvbservice::Proxy;
using lo::browserdvbservice::ServiceInterface;

namespace {

constexpr const char* kName = "tarno.lm.interfaces.browserdvbservice";

/// A member that registers names in the interface registry.
class OtherMember : public frame::AbstractProcessMember {};

class AProxyAsAMember : public testing::Test {
protected:
    AProxyAsAMember() {
        seams::reset();
        recording::reset();
    }
    ~AProxyAsAMember() override {
        seams::reset();
        frame::Process::getInstance().stopAppMembers();
    }

    static bool isPublished() {
        boost::shared_ptr<frame::Interface> found;
        return frame::Process::getInstance().getInterfaceReference(found, kName) >= 0;
    }
};

std::vector<recording::LogLine> linesOfProxy() {
    std::vector<recording::LogLine> lines;
    for (const recording::LogLine& line : recording::log()) {
        if (line.file == kProxyFile) {
            lines.push_back(line);
        }
    }
    return lines;
}

auto called(const std::string& function) {
    return logged::plain(0x5F0FA0, kProxyFile, function, "Called.\n");
}

}  // namespace

TEST_F(AProxyAsAMember, IsTheOnlyMemberTheHookCreates) {
    frame::AbstractApplication** members = CreateBrowserDvbServiceProxy();
    ASSERT_NE(members, nullptr);
    ASSERT_NE(members[0], nullptr);
    EXPECT_EQ(members[1], nullptr);
    auto* const proxy = dynamic_cast<Proxy*>(members[0]);
    ASSERT_NE(proxy, nullptr);
    EXPECT_EQ(proxy->serviceName(), "browserdvbservice");
    EXPECT_EQ(proxy->couplingMode(), 0);
    EXPECT_THAT(recording::log(), testing::ElementsAre(called("CreateBrowserDvbServiceProxy"), called("Proxy")));
    delete proxy;
    std::free(members);
}

TEST_F(AProxyAsAMember, IsCreatedByTheProcessModelsHook) {
    frame::AbstractApplication** members = frameCreateApplicationArray();
    EXPECT_NE(dynamic_cast<Proxy*>(members[0]), nullptr);
    EXPECT_EQ(members[1], nullptr);
    EXPECT_THAT(recording::log(), testing::ElementsAre(called("CreateBrowserDvbServiceProxy"), called("Proxy")));
    delete members[0];
    std::free(members);
}

TEST_F(AProxyAsAMember, RegistersTheDecoderOfEachEventInOrder) {
    Proxy proxy;
    const std::size_t before = recording::registrations().size();
    recording::reset();
    EXPECT_EQ(proxy.setLmqIOModule(recording::ioService()), 0);
    EXPECT_THAT(recording::log(), testing::ElementsAre(called("registerMessageHandlers")));

    std::vector<recording::Registration> registered = recording::registrations();
    registered.erase(registered.begin(), registered.begin() + static_cast<std::ptrdiff_t>(before));
    std::size_t index = 0;
#define EXPECTED_EVENT(operation, Message, decimal, hexadecimal, bytes, layout)                             \
    ASSERT_LT(index, registered.size());                                                                    \
    EXPECT_EQ(registered[index].service, recording::ioService()) << #operation;                             \
    EXPECT_EQ(registered[index].header.firstWord, -1) << #operation;                                        \
    EXPECT_EQ(registered[index].header.interfaceId, 0x1CCD7774U) << #operation;                             \
    EXPECT_EQ(registered[index].header.messageId, std::uint32_t{decimal}) << #operation;                    \
    EXPECT_EQ(registered[index].header.direction, 1) << #operation;                                         \
    EXPECT_EQ(registered[index].context, &proxy) << #operation;                                             \
    EXPECT_EQ(registered[index].table, &__ovx_EndianTable_browserdvbserviceMsg##Message##_t) << #operation; \
    ++index;
#include "expected_messages.inc"
    EXPECT_EQ(index, kEvents);
    EXPECT_EQ(registered.size(), kEvents);
}

TEST_F(AProxyAsAMember, IgnoresTheResultOfRegistrations) {
    Proxy proxy;
    EXPECT_EQ(proxy.setLmqIOModule(nullptr), 0);
    for (const int result : {-4, 4}) {
        recording::reset();
        seams::setRegistrationResult(result);
        const std::size_t before = recording::registrations().size();
        EXPECT_EQ(proxy.setLmqIOModule(recording::ioService()), 0);
        EXPECT_EQ(recording::registrations().size() - before, kEvents);
        EXPECT_THAT(recording::log(), testing::ElementsAre(called("registerMessageHandlers")));
    }
}

TEST_F(AProxyAsAMember, AcceptsAPositiveResultOfItsBase) {
    Proxy proxy;
    recording::reset();
    seams::setBaseStep([] { return 5; });
    EXPECT_EQ(proxy.setupDone(), 0);
    EXPECT_TRUE(isPublished());
    EXPECT_EQ(proxy.start(), 0);
    EXPECT_EQ(proxy.stop(), 0);
    EXPECT_THAT(recording::log(),
                testing::ElementsAre(called("performSetupDone"), called("performStarting"), called("performStopping")));
}

TEST_F(AProxyAsAMember, AcceptsAPositiveResultOfPublishing) {
    Proxy proxy;
    recording::reset();
    seams::setPublishResult(3);
    EXPECT_EQ(proxy.setupDone(), 0);
    EXPECT_THAT(recording::log(), testing::ElementsAre(called("performSetupDone")));
}

TEST_F(AProxyAsAMember, LogsAStepBeforeItsBaseRuns) {
    Proxy proxy;
    std::vector<std::string> lastLines;
    recording::reset();
    seams::setBaseStep([&lastLines] {
        EXPECT_FALSE(isPublished());
        lastLines.push_back(recording::log().back().function);
        return -1;
    });
    proxy.setupDone();
    proxy.start();
    proxy.stop();
    EXPECT_THAT(lastLines, testing::ElementsAre("performSetupDone", "performStarting", "performStopping"));
}

TEST_F(AProxyAsAMember, ReturnsEachNegativeResultAsItIs) {
    Proxy proxy;
    recording::reset();
    seams::setPublishResult(-12);
    EXPECT_EQ(proxy.setupDone(), -12);
    seams::setBaseStep([] { return -107; });
    EXPECT_EQ(proxy.setupDone(), -107);
    EXPECT_EQ(proxy.start(), -107);
    EXPECT_EQ(proxy.stop(), -107);
    const auto failed = [](const std::string& function, const std::string& message) {
        return logged::plain(0x5F03E8, kProxyFile, function, message + "\n");
    };
    EXPECT_THAT(
        recording::log(),
        testing::ElementsAre(
            called("performSetupDone"), failed("performSetupDone", "Unable to register interface: -12."),
            called("performSetupDone"), failed("performSetupDone", "Parent class performSetupDone() returned -107."),
            called("performStarting"), failed("performStarting", "Parent class performStarting() returned -107."),
            called("performStopping"), failed("performStopping", "Parent class performStopping() returned -107.")));
}

TEST_F(AProxyAsAMember, WithdrawsItsInterfaceBeforeReleasingClients) {
    class LastLook : public RecordingClient {
    public:
        explicit LastLook(std::vector<std::string>& newEvents) : events(newEvents) {}
        ~LastLook() override {
            events.emplace_back(isPublished() ? "published" : "withdrawn");
            events.push_back(recording::log().back().function);
        }
        std::vector<std::string>& events;
    };
    std::vector<std::string> events;
    {
        Proxy proxy;
        ASSERT_EQ(proxy.setupDone(), 0);
        proxy.addClient(boost::shared_ptr<RecordingClient>(new LastLook(events)));
    }
    EXPECT_THAT(events, testing::ElementsAre("withdrawn", "~Proxy"));
}

TEST_F(AProxyAsAMember, PublishesItsInterfaceFromSetupToDestruction) {
    boost::shared_ptr<frame::Interface> found;
    {
        Proxy proxy;
        recording::reset();
        EXPECT_LT(frame::Process::getInstance().getInterfaceReference(found, kName), 0);
        EXPECT_EQ(proxy.setupDone(), 0);
        ASSERT_EQ(frame::Process::getInstance().getInterfaceReference(found, kName), 0);
        EXPECT_EQ(found->pointer(), static_cast<ServiceInterface*>(&proxy));
        EXPECT_EQ(proxy.stop(), 0);
        EXPECT_EQ(frame::Process::getInstance().getInterfaceReference(found, kName), 0);
    }
    EXPECT_LT(frame::Process::getInstance().getInterfaceReference(found, kName), 0);
    EXPECT_THAT(recording::log(),
                testing::ElementsAre(called("performSetupDone"), called("performStopping"), called("~Proxy")));
}

TEST_F(AProxyAsAMember, ReturnsTheRegistrysRefusalWithALine) {
    OtherMember other;
    int someObject = 0;
    ASSERT_EQ(other.registerInterface(&someObject, kName), 0);
    Proxy proxy;
    recording::reset();
    EXPECT_EQ(proxy.setupDone(), -1);
    EXPECT_THAT(recording::log(),
                testing::ElementsAre(called("performSetupDone"), logged::plain(0x5F03E8, kProxyFile, "performSetupDone",
                                                                               "Unable to register interface: -1.\n")));
    other.unregisterInterface(&someObject);
}

TEST_F(AProxyAsAMember, LogsAFailedStartOfItsBase) {
    Proxy proxy;
    proxy.setLmqIOModule(recording::ioService());
    recording::reset();
    recording::setStartResult(-5);
    EXPECT_EQ(proxy.start(), -5);
    EXPECT_THAT(recording::log(), testing::ElementsAre(called("performStarting"),
                                                       logged::plain(0x5F03E8, kProxyFile, "performStarting",
                                                                     "Parent class performStarting() returned -5.\n")));
}

TEST_F(AProxyAsAMember, PublishesNothingWhenItsBaseFailsToSetUp) {
    Proxy proxy;
    recording::reset();
    recording::setSetUpResult(-6);
    EXPECT_EQ(proxy.setupDone(), -6);
    EXPECT_THAT(recording::log(),
                testing::ElementsAre(called("performSetupDone"),
                                     logged::plain(0x5F03E8, kProxyFile, "performSetupDone",
                                                   "Parent class performSetupDone() returned -6.\n")));
    boost::shared_ptr<frame::Interface> found;
    EXPECT_LT(frame::Process::getInstance().getInterfaceReference(found, kName), 0);
}

TEST_F(AProxyAsAMember, LogsAFailedStopOfItsBase) {
    Proxy proxy;
    recording::reset();
    recording::setStopResult(-7);
    EXPECT_EQ(proxy.stop(), -7);
    EXPECT_THAT(recording::log(), testing::ElementsAre(called("performStopping"),
                                                       logged::plain(0x5F03E8, kProxyFile, "performStopping",
                                                                     "Parent class performStopping() returned -7.\n")));
}

TEST_F(AProxyAsAMember, StartsAndStopsWithALineEach) {
    Proxy proxy;
    proxy.setLmqIOModule(recording::ioService());
    recording::reset();
    EXPECT_EQ(proxy.start(), 0);
    EXPECT_EQ(proxy.stop(), 0);
    EXPECT_THAT(recording::log(), testing::ElementsAre(called("performStarting"), called("performStopping")));
}

TEST_F(AProxyAsAMember, GoesThroughItsStepsInOrder) {
    ASSERT_EQ(frame::Process::getInstance().startAppMembersSync(CreateBrowserDvbServiceProxy), 0);
    frame::Process::getInstance().stopAppMembers();
    EXPECT_THAT(linesOfProxy(),
                testing::ElementsAre(called("CreateBrowserDvbServiceProxy"), called("Proxy"),
                                     called("registerMessageHandlers"), called("performSetupDone"),
                                     called("performStarting"), called("performStopping"), called("~Proxy")));
}

TEST_F(AProxyAsAMember, IsDestroyedWhenAStepFails) {
    recording::setStartResult(-9);
    EXPECT_EQ(frame::Process::getInstance().startAppMembersSync(CreateBrowserDvbServiceProxy), -9);
    EXPECT_THAT(linesOfProxy(), testing::ElementsAre(called("CreateBrowserDvbServiceProxy"), called("Proxy"),
                                                     called("registerMessageHandlers"), called("performSetupDone"),
                                                     called("performStarting"),
                                                     logged::plain(0x5F03E8, kProxyFile, "performStarting",
                                                                   "Parent class performStarting() returned -9.\n"),
                                                     called("~Proxy")))
        << "a member that did not start is not stopped";
    EXPECT_FALSE(isPublished());
}

TEST_F(AProxyAsAMember, IsNotStartedWhenItsSetupFails) {
    recording::setSetUpResult(-8);
    EXPECT_EQ(frame::Process::getInstance().startAppMembersSync(CreateBrowserDvbServiceProxy), -8);
    EXPECT_THAT(recording::logOf("performStarting"), testing::IsEmpty());
    EXPECT_THAT(recording::logOf("performStopping"), testing::IsEmpty());
    EXPECT_THAT(linesOfProxy().back(), called("~Proxy"));
}

namespace {

std::vector<std::string>& steps() {
    static std::vector<std::string> taken;
    return taken;
}

/// A member that records its steps under a name.
template <char name>
class NotingMember : public frame::AbstractApplication {
public:
    int performStarting() override { return note("starts "); }
    int performStopping() override { return note("stops "); }
    ~NotingMember() override { note("goes "); }

    static frame::AbstractApplication** create() {
        auto** const members = static_cast<frame::AbstractApplication**>(std::calloc(2, sizeof(void*)));
        members[0] = new NotingMember;
        return members;
    }

private:
    static int note(const std::string& step) {
        steps().push_back(step + name);
        return 0;
    }
};

}  // namespace

TEST_F(AProxyAsAMember, StopsAfterMembersStartedLater) {
    frame::Process process = frame::Process::getInstance();
    steps().clear();
    ASSERT_EQ(process.startAppMembersSync(NotingMember<'a'>::create), 0);
    ASSERT_EQ(process.startAppMembersSync(NotingMember<'b'>::create), 0);
    process.stopAppMembers();
    EXPECT_THAT(steps(), testing::ElementsAre("starts a", "starts b", "stops b", "goes b", "stops a", "goes a"));
}
