// Typed out: the virtual-table slot of every operation that crosses the library's boundary.
#include <gtest/gtest.h>

#include "app-browserdvbservice-proxy-main.h"
#include "browser_dvb_apis.h"
#include "browser_dvb_service.h"
#include "dvbaitsection_apis.h"
#include "message_counts.h"
#include "section_filter_api.h"
#include "vtable_slot.h"

using lo::browserdvbservice::ClientInterface;
using lo::browserdvbservice::Proxy;
using lo::browserdvbservice::ServiceInterface;
using velmora::dtv::AITSectionClient;
using velmora::dtv::DVBAITSectionInterface;
using velmora::dtv::DvbAPIInterface;
using velmora::dtv::DVBSectionInterface;
using velmora::dtv::DVBServiceListener;
using velmora::dtv::IDTVUnknown;
using velmora::dtv::SectionFilterClient;

namespace {

/// A class that begins with a virtual destructor has two destructor slots first.
constexpr int kBehindDestructors = 2;

using TuneByTriplet = void (DvbAPIInterface::*)(int, int, int, int, int);
using TuneByDescriptor = void (DvbAPIInterface::*)(const std::string&, int, int);

}  // namespace

TEST(TheSlotOrder, FollowsTheEventsInTheClientInterface) {
    int slot = kBehindDestructors;
#define EXPECTED_EVENT(operation, Message, decimal, hexadecimal, size, layout) \
    EXPECT_EQ(vtableSlot(&ClientInterface::operation), slot++) << #operation;
#include "expected_messages.inc"
    EXPECT_EQ(slot, kBehindDestructors + static_cast<int>(kEvents));
}

TEST(TheSlotOrder, PutsCommandsBeforeTheRegistry) {
    int slot = kBehindDestructors;
#define EXPECTED_COMMAND(operation, Message, decimal, hexadecimal, size, layout) \
    EXPECT_EQ(vtableSlot(&ServiceInterface::operation), slot++) << #operation;
#include "expected_messages.inc"
    EXPECT_EQ(vtableSlot(&ServiceInterface::addClient), slot++);
    EXPECT_EQ(vtableSlot(&ServiceInterface::removeClient), slot++);
    EXPECT_EQ(slot, kBehindDestructors + static_cast<int>(kCommands) + 2);
}

TEST(TheSlotOrder, OfTheProxyBeginsWithThePlatformsOperations) {
    EXPECT_EQ(vtableSlot(&Proxy::attachProcess), 2);
    EXPECT_EQ(vtableSlot(&Proxy::detachProcess), 3);
    EXPECT_EQ(vtableSlot(&Proxy::setupDone), 4);
    EXPECT_EQ(vtableSlot(&Proxy::start), 5);
    EXPECT_EQ(vtableSlot(&Proxy::stop), 6);
    EXPECT_EQ(vtableSlot(&Proxy::performSetupDone), 7);
    EXPECT_EQ(vtableSlot(&Proxy::performStarting), 8);
    EXPECT_EQ(vtableSlot(&Proxy::performStopping), 9);
    EXPECT_EQ(vtableSlot(&Proxy::getServiceId), 10);
    EXPECT_EQ(vtableSlot(&Proxy::deliverEvent), 11);
    EXPECT_EQ(vtableSlot(&Proxy::handleEvent), 12);
    EXPECT_EQ(vtableSlot(&Proxy::registerEventHandler), 13);
    EXPECT_EQ(vtableSlot(&Proxy::unregisterEventHandler), 14);
    EXPECT_EQ(vtableSlot(&Proxy::deliverInternalEvent), 15);
    EXPECT_EQ(vtableSlot(&Proxy::postEvent), 16);
    EXPECT_EQ(vtableSlot(&Proxy::postInternalEvent), 17);
    EXPECT_EQ(vtableSlot(&Proxy::scheduleEvents), 18);
    EXPECT_EQ(vtableSlot(&Proxy::setLmqIOModule), 19);
    EXPECT_EQ(vtableSlot(&Proxy::registerMessageHandlers), 20);
    EXPECT_EQ(vtableSlot(&Proxy::onIOConnectionConnected), 21);
    EXPECT_EQ(vtableSlot(&Proxy::onIOConnectionConnectionFailed), 22);
    EXPECT_EQ(vtableSlot(&Proxy::onIOConnectionDisconnected), 23);
}

TEST(TheSlotOrder, PutsCommandsAndRegistryAfterThePlatform) {
    int slot = 24;
#define EXPECTED_COMMAND(operation, Message, decimal, hexadecimal, size, layout) \
    EXPECT_EQ(vtableSlot(&Proxy::operation), slot++) << #operation;
#include "expected_messages.inc"
    EXPECT_EQ(vtableSlot(&Proxy::addClient), slot++);
    EXPECT_EQ(vtableSlot(&Proxy::removeClient), slot++);
}

TEST(TheSlotOrder, FollowsTheEventsInTheServiceObject) {
    using velmora::dvbservice::BrowserDVBService;
    int slot = kBehindDestructors;
#define EXPECTED_EVENT(operation, Message, decimal, hexadecimal, size, layout) \
    EXPECT_EQ(vtableSlot(&BrowserDVBService::operation), slot++) << #operation;
#include "expected_messages.inc"
}

TEST(TheSlotOrder, StartsInterfacesWithTheirRoot) {
    EXPECT_EQ(vtableSlot(&IDTVUnknown::AddRef), 2);
    EXPECT_EQ(vtableSlot(&IDTVUnknown::Release), 3);
    EXPECT_EQ(vtableSlot(&IDTVUnknown::name), 4);
}

TEST(TheSlotOrder, OfTheDvbApi) {
    EXPECT_EQ(vtableSlot(&DvbAPIInterface::getCurrentChannelInfo), 5);
    EXPECT_EQ(vtableSlot(&DvbAPIInterface::getCurrentCCID), 6);
    EXPECT_EQ(vtableSlot(&DvbAPIInterface::getCurrentDsd), 7);
    EXPECT_EQ(vtableSlot(&DvbAPIInterface::sendApplicationStartedFailed), 8);
    EXPECT_EQ(vtableSlot(&DvbAPIInterface::sendApplicationStartedSucceeded), 9);
    EXPECT_EQ(vtableSlot(&DvbAPIInterface::triggerAitRestart), 10);
    EXPECT_EQ(vtableSlot(static_cast<TuneByTriplet>(&DvbAPIInterface::tuneToService)), 11);
    EXPECT_EQ(vtableSlot(static_cast<TuneByDescriptor>(&DvbAPIInterface::tuneToService)), 12);
    EXPECT_EQ(vtableSlot(&DvbAPIInterface::tuneToComponent), 13);
    EXPECT_EQ(vtableSlot(&DvbAPIInterface::selectComponent), 14);
    EXPECT_EQ(vtableSlot(&DvbAPIInterface::unselectComponent), 15);
    EXPECT_EQ(vtableSlot(&DvbAPIInterface::setAudioSource), 16);
    EXPECT_EQ(vtableSlot(&DvbAPIInterface::addListener), 17);
    EXPECT_EQ(vtableSlot(&DvbAPIInterface::removeListener), 18);
    EXPECT_EQ(vtableSlot(&DvbAPIInterface::notifyMwhbStart), 19);
    EXPECT_EQ(vtableSlot(&DvbAPIInterface::sendPtsRequest), 20);
    EXPECT_EQ(vtableSlot(&DvbAPIInterface::startTemiTimelineRequest), 21);
    EXPECT_EQ(vtableSlot(&DvbAPIInterface::stopTemiTimelineRequest), 22);
    EXPECT_EQ(vtableSlot(&DvbAPIInterface::startOSDDetection), 23);
    EXPECT_EQ(vtableSlot(&DvbAPIInterface::stopOSDDetection), 24);
    EXPECT_EQ(vtableSlot(&DvbAPIInterface::sendDrmMessage), 25);
    EXPECT_EQ(vtableSlot(&DvbAPIInterface::connectCa), 26);
    EXPECT_EQ(vtableSlot(&DvbAPIInterface::disconnectCa), 27);
    EXPECT_EQ(vtableSlot(&DvbAPIInterface::sendOpAppInstallStatus), 28);
    EXPECT_EQ(vtableSlot(&DvbAPIInterface::vbStartDtvInfoRequest), 29);
}

TEST(TheSlotOrder, OfAListener) {
    EXPECT_EQ(vtableSlot(&DVBServiceListener::OnChannelChanged), 2);
    EXPECT_EQ(vtableSlot(&DVBServiceListener::onAITChannelInfoChanged), 3);
    EXPECT_EQ(vtableSlot(&DVBServiceListener::onSelectedComponentChanged), 4);
    EXPECT_EQ(vtableSlot(&DVBServiceListener::onComponentInfoChanged), 5);
    EXPECT_EQ(vtableSlot(&DVBServiceListener::onAITSectionUpdated), 6);
    EXPECT_EQ(vtableSlot(&DVBServiceListener::onHbbTVEngineStatusChanged), 7);
    EXPECT_EQ(vtableSlot(&DVBServiceListener::onPMTSectionUpdated), 8);
    EXPECT_EQ(vtableSlot(&DVBServiceListener::onEITSectionUpdated), 9);
    EXPECT_EQ(vtableSlot(&DVBServiceListener::onTimelineInfoDataChange), 10);
    EXPECT_EQ(vtableSlot(&DVBServiceListener::onAllTerminalStoped), 11);
    EXPECT_EQ(vtableSlot(&DVBServiceListener::onPtsNotify), 12);
    EXPECT_EQ(vtableSlot(&DVBServiceListener::onOSDStateChanged), 13);
    EXPECT_EQ(vtableSlot(&DVBServiceListener::onDrmResultReply), 14);
    EXPECT_EQ(vtableSlot(&DVBServiceListener::onCaDrmConnected), 15);
    EXPECT_EQ(vtableSlot(&DVBServiceListener::onCaDrmDisonnected), 16);
    EXPECT_EQ(vtableSlot(&DVBServiceListener::onCaDrmSystemStatusChanged), 17);
    EXPECT_EQ(vtableSlot(&DVBServiceListener::onDATagsServicePmtSectionUpdated), 18);
}

TEST(TheSlotOrder, OfTheSectionFilterApi) {
    EXPECT_EQ(vtableSlot(&DVBSectionInterface::startPMTRequest), 5);
    EXPECT_EQ(vtableSlot(&DVBSectionInterface::stopPMTRequest), 6);
    EXPECT_EQ(vtableSlot(&DVBSectionInterface::generateSessionName), 7);
    EXPECT_EQ(vtableSlot(&DVBSectionInterface::startSection), 8);
    EXPECT_EQ(vtableSlot(&DVBSectionInterface::stopSection), 9);
}

TEST(TheSlotOrder, OfTheAitApi) {
    EXPECT_EQ(vtableSlot(&DVBAITSectionInterface::registerClient), 5);
    EXPECT_EQ(vtableSlot(&DVBAITSectionInterface::unRegisterClient), 6);
    EXPECT_EQ(vtableSlot(&DVBAITSectionInterface::getCurrentChannelAIT), 7);
}

TEST(TheSlotOrder, StartsClientsWithTheirCallback) {
    EXPECT_EQ(vtableSlot(&SectionFilterClient::onSectionData), 0);
    EXPECT_EQ(vtableSlot(&AITSectionClient::onCurrentChannelAIT), 0);
}
