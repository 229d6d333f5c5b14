// The AIT API: its one client, and its access to the process's catcher.
#include "catcher_fixture.h"

namespace {

using velmora::dvbservice::BrowserAITCatcher;
using velmora::dvbservice::DvbAITSectionAPI;

constexpr const char* kFile = "dvbaitsection_apis.cpp";

}  // namespace

TEST(TheAitApi, UnregistersItsClientWhicheverIsGiven) {
    KeepingAitClient first;
    KeepingAitClient second;
    DvbAITSectionAPI* const api = DvbAITSectionAPI::getInstance();
    EXPECT_FALSE(api->isRegistered(&first));
    EXPECT_TRUE(api->registerClient(&first));
    EXPECT_TRUE(api->isRegistered(&second)) << "the argument is not compared";
    EXPECT_TRUE(api->registerClient(&second));
    api->notifyCurrentChannelAIT(1, 2, 3, {1});
    EXPECT_TRUE(first.deliveries().empty());
    EXPECT_EQ(second.deliveries().size(), 1U);
    EXPECT_TRUE(api->unRegisterClient(&first));
    EXPECT_FALSE(api->isRegistered(&second));
    api->notifyCurrentChannelAIT(1, 2, 3, {1});
    EXPECT_EQ(second.deliveries().size(), 1U);
}

TEST(TheAitApi, RegistersItsCallerAndReplaysTheProcesssCatcher) {
    BrowserAITCatcher* const catcher = BrowserAITCatcher::getInstance();
    catcher->updateCurrentChannelInfo(0, 7, 8, 9);
    catcher->updateAIT(asText(aitBytes(1, 0, 0, 1)));
    KeepingAitClient client;
    EXPECT_TRUE(DvbAITSectionAPI::getInstance()->getCurrentChannelAIT(&client, 7, 8, 9));
    EXPECT_TRUE(eventually([&] { return client.deliveries().size() == 1; }));
    DvbAITSectionAPI::getInstance()->unRegisterClient(&client);
}

TEST(TheAitApi, TakesNoClientForOne) {
    KeepingAitClient client;
    DvbAITSectionAPI* const api = DvbAITSectionAPI::getInstance();
    api->registerClient(&client);
    EXPECT_TRUE(api->registerClient(nullptr));
    EXPECT_FALSE(api->isRegistered(&client));
    EXPECT_TRUE(api->unRegisterClient(nullptr)) << "also when there is none";
}

TEST(TheAitApi, WritesNoLineOfItsOwn) {
    KeepingAitClient client;
    DvbAITSectionAPI* const api = DvbAITSectionAPI::getInstance();
    recording::reset();
    api->registerClient(&client);
    api->isRegistered(&client);
    api->notifyCurrentChannelAIT(1, 2, 3, {1});
    api->unRegisterClient(&client);
    api->notifyCurrentChannelAIT(1, 2, 3, {1});
    EXPECT_THAT(recording::log(), testing::IsEmpty());
}

TEST(TheAitApi, HandsTheSectionOnWithoutACopy) {
    class LookingClient final : public velmora::dtv::AITSectionClient {
    public:
        const Bytes* seen = nullptr;
        void onCurrentChannelAIT(std::uint16_t, std::uint16_t, std::uint16_t, const Bytes& section) override {
            seen = &section;
        }
    };
    LookingClient client;
    DvbAITSectionAPI* const api = DvbAITSectionAPI::getInstance();
    api->registerClient(&client);
    const Bytes section(8, 1);
    api->notifyCurrentChannelAIT(65535, 0, 32768, section);
    EXPECT_EQ(client.seen, &section);
    api->unRegisterClient(&client);
}

TEST(TheAitApi, LogsAMissingCatcher) {
    seams::hideCatcher();
    KeepingAitClient client;
    DvbAITSectionAPI* const api = DvbAITSectionAPI::getInstance();
    recording::reset();
    EXPECT_FALSE(api->getCurrentChannelAIT(&client, 1, 2, 3));
    EXPECT_THAT(recording::log(), testing::ElementsAre(logged::tagged(kFailure, kTag, kFile, "getCurrentChannelAIT",
                                                                      "Get browserAitCatcher failed.\n")));
    EXPECT_TRUE(api->isRegistered(&client)) << "its caller is the client all the same";
    api->unRegisterClient(&client);
    seams::reset();
}

TEST(TheAitApi, RegistersItsCallerThroughItsOwnOperation) {
    class OwnApi : public DvbAITSectionAPI {
    public:
        std::vector<velmora::dtv::AITSectionClient*> clients;
        bool registerClient(velmora::dtv::AITSectionClient* client) override {
            clients.push_back(client);
            return false;
        }
    };
    seams::keepWorkers();
    KeepingAitClient client;
    OwnApi api;
    EXPECT_TRUE(api.getCurrentChannelAIT(&client, 1, 2, 3)) << "whatever the registration answers";
    EXPECT_EQ(api.clients, std::vector<velmora::dtv::AITSectionClient*>({&client}));
    ASSERT_EQ(seams::keptWorkers().size(), 1U);
    seams::keptWorkers()[0].run();
    seams::reset();
}

TEST(TheAitApi, PassesTheTripletInOrder) {
    seams::keepWorkers();
    KeepingAitClient client;
    recording::reset();
    EXPECT_TRUE(DvbAITSectionAPI::getInstance()->getCurrentChannelAIT(&client, 7, 8, 9));
    EXPECT_THAT(allMessages(), testing::ElementsAre("onId:7,tsId:8,sId:9\n"));
    ASSERT_EQ(seams::keptWorkers().size(), 1U);
    EXPECT_EQ(seams::keptWorkers()[0].argument, BrowserAITCatcher::getInstance());
    seams::keptWorkers()[0].run();
    DvbAITSectionAPI::getInstance()->unRegisterClient(&client);
    seams::reset();
}

TEST(TheAitApi, SucceedsThoughTheReplaysWorkerCannotBeMade) {
    KeepingAitClient client;
    recording::reset();
    recording::setThreadCreateResult(11);
    EXPECT_TRUE(DvbAITSectionAPI::getInstance()->getCurrentChannelAIT(&client, 7, 8, 9));
    recording::reset();
    DvbAITSectionAPI::getInstance()->unRegisterClient(&client);
}

TEST(TheAitApi, IsNamedAndNotCounted) {
    DvbAITSectionAPI* const api = DvbAITSectionAPI::getInstance();
    recording::reset();
    api->Release();
    api->Release();
    api->AddRef();
    EXPECT_EQ(api->name(), "DvbAITAPI");
    EXPECT_EQ(DvbAITSectionAPI::GetInstance(), api);
    EXPECT_THAT(recording::log(), testing::IsEmpty());
}
