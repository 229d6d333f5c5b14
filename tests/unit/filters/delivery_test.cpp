// The section-data channel and its delivery thread.
#include <atomic>
#include <future>
#include <new>

#include "eventually.h"
#include "filter_fixture.h"

namespace {

/// Makes the optional allocations fail: of objects, and of arrays.
std::atomic<bool> failingObjects{false};
std::atomic<bool> failingArrays{false};
/// Number of such allocations so far.
std::atomic<int> allocations{0};

}  // namespace

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    ++allocations;
    return failingObjects ? nullptr : ::operator new(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    ++allocations;
    return failingArrays ? nullptr : ::operator new[](size);
}

namespace {

constexpr const char* kFile = "browser_dvb_service_sections.cpp";

class ADelivery : public AFilter {
protected:
    std::string queue() { return BrowserDVBServiceTestAccess::queueName(*service); }
    void openFilter(const std::string& session, unsigned int pid = 100) {
        answerWith(0);
        ASSERT_EQ(service->startSection(&client, session, pid, nullptr, nullptr, 0), 0);
    }
    bool delivered(std::size_t count) {
        return eventually([&] { return client.sections().size() == count; });
    }
};

}  // namespace

TEST_F(ADelivery, CreatesQueueAndThreadOnce) {
    EXPECT_TRUE(service->createIPCChannelForSectionData());
    EXPECT_EQ(recording::sent().size(), 1U);
    const recording::SentMessage sent = recording::sent()[0];
    EXPECT_EQ(sent.header.messageId, 0x28671242U);
    EXPECT_EQ(sent.wire[3], 53U) << "SECTION- and 45 characters";
    EXPECT_EQ(std::string(sent.wire.begin() + 24, sent.wire.end()), queue());
    EXPECT_TRUE(recording::waitForLog("thread_proc_section_data create Signal 1"));
    EXPECT_THAT(messagesOf("thread_proc_section_data"),
                testing::ElementsAre("thread_proc_section_data create Signal 1\n\n"));
    EXPECT_EQ(recording::queueLimits(queue()).messageSize, 4500U);
    EXPECT_EQ(recording::queueLimits(queue()).messages, 128U);
    EXPECT_THAT(recording::threadsCreated(), testing::ElementsAre(recording::ThreadKind::joinable));
    EXPECT_THAT(
        messagesOf("createIPCChannelForSectionData"),
        testing::ElementsAre("Wait thread_proc_section_data create 0\n\n", "thread_proc_section_data create OK 2\n\n"));
    recording::reset();
    EXPECT_TRUE(service->createIPCChannelForSectionData());
    EXPECT_TRUE(lines().empty());
    EXPECT_TRUE(recording::sent().empty());
}

TEST_F(ADelivery, TriesAgainAfterAFailedQueue) {
    recording::setQueueCreationFails(true);
    EXPECT_FALSE(service->createIPCChannelForSectionData());
    EXPECT_THAT(messagesOf("createIPCChannelForSectionData"),
                testing::ElementsAre("Failed to create IPC message queue[" + queue() + "] \n\n"));
    recording::setQueueCreationFails(false);
    EXPECT_TRUE(service->createIPCChannelForSectionData());
}

TEST_F(ADelivery, DeliversEachSectionUnchangedToItsClient) {
    openFilter("a", 0x111);
    openFilter("b", 0x222);
    std::size_t count = 0;
    for (const std::size_t size : {3U, 188U, 1024U, 4093U, 4096U}) {
        std::vector<std::uint8_t> section(size);
        for (std::size_t at = 0; at < size; ++at) {
            section[at] = static_cast<std::uint8_t>(at * 13 + size);
        }
        ASSERT_TRUE(recording::writeSection(queue(), size % 2 == 0 ? "a" : "b", section));
        ASSERT_TRUE(delivered(++count));
        EXPECT_EQ(client.sections().back().bytes, section);
        EXPECT_EQ(client.sections().back().session, size % 2 == 0 ? "a" : "b");
        EXPECT_EQ(client.sections().back().pid, size % 2 == 0 ? 0x111U : 0x222U);
    }
}

TEST_F(ADelivery, DropsUnknownSessionsSilently) {
    openFilter("a");
    ASSERT_TRUE(recording::waitForLog("thread_proc_section_data create Signal 1"));
    recording::reset();
    ASSERT_TRUE(recording::writeSection(queue(), "unknown", {1, 2, 3}));
    ASSERT_TRUE(recording::writeSection(queue(), "a", {4}));
    ASSERT_TRUE(delivered(1));
    EXPECT_EQ(client.sections()[0].bytes, std::vector<unsigned char>{4});
    EXPECT_TRUE(lines().empty());
}

TEST_F(ADelivery, DropsSectionsOfUnregisteredClients) {
    answerWith(0);
    service->startSection(nullptr, "null", 1, nullptr, nullptr, 0);
    ASSERT_TRUE(recording::writeSection(queue(), "null", {1}));
    EXPECT_TRUE(recording::waitForLog("Invalid Message for Client: (nil)\n"));
    service->createIPCChannelForSectionData();
    service->saveFilter(FilterParameter::create(&client, "unregistered", 1, nullptr, nullptr, 0));
    recording::reset();
    ASSERT_TRUE(recording::writeSection(queue(), "unregistered", {1}));
    EXPECT_TRUE(recording::waitForLog("Invalid Message for Client: " + pointerText(&client) + "\n"));
    EXPECT_EQ(recording::logOf("thread_proc_section_data").at(0).level, kFailure);
    EXPECT_TRUE(client.sections().empty());
}

TEST_F(ADelivery, LooksForTheClientOfAFilterThatIsSavedAgain) {
    ASSERT_TRUE(service->createIPCChannelForSectionData());
    const auto filter = FilterParameter::create(&client, "a", 1, nullptr, nullptr, 0);
    service->saveFilter(filter);
    ASSERT_TRUE(recording::writeSection(queue(), "a", {1}));
    ASSERT_TRUE(recording::waitForLog("Invalid Message for Client: " + pointerText(&client) + "\n"));
    service->registerClient(&client);
    ASSERT_TRUE(recording::writeSection(queue(), "a", {2}));
    ASSERT_TRUE(delivered(1));
    service->removeFilter(filter);
    ASSERT_TRUE(service->unRegisterClient(&client));
    service->saveFilter(filter);
    recording::reset();
    ASSERT_TRUE(recording::writeSection(queue(), "a", {3}));
    EXPECT_TRUE(recording::waitForLog("Invalid Message for Client: " + pointerText(&client) + "\n"));
    EXPECT_EQ(client.sections().size(), 1U);
}

TEST_F(ADelivery, LetsAClientCloseItsFilterFromInside) {
    openFilter("a");
    std::atomic<int> result{-5};
    client.reaction = [this, &result] { result = service->stopSection(&client, "a"); };
    ASSERT_TRUE(recording::writeSection(queue(), "a", {1}));
    EXPECT_TRUE(eventually([&] { return result == 0; }));
}

TEST_F(ADelivery, EndsForGoodAfterAReceiveError) {
    openFilter("a");
    ASSERT_TRUE(recording::failReceive(queue()));
    EXPECT_TRUE(recording::waitForLog("Failed to received DTV data. Exception occured: "));
    EXPECT_THAT(recording::logOf("thread_proc_section_data").back(),
                logged::tagged(kFailure, kTag, kFile, "thread_proc_section_data",
                               "Failed to received DTV data. Exception occured: Input/output error\n"));
    recording::reset();
    openFilter("b");
    EXPECT_TRUE(messagesOf("createIPCChannelForSectionData").empty()) << "no thread is made again";
    ASSERT_TRUE(recording::writeSection(queue(), "b", {1}));
    // Longer than the thread's pause after the error.
    EXPECT_FALSE(eventually([&] { return recording::waitingSections(queue()) != 1; }, std::chrono::milliseconds(300)));
    EXPECT_TRUE(client.sections().empty());
    EXPECT_TRUE(recording::logOf("thread_proc_section_data").empty());
}

TEST_F(ADelivery, OutlivesItsObjectAndTouchesItNoMore) {
    openFilter("a");
    const std::string name = queue();
    ASSERT_TRUE(recording::writeSection(name, "a", {1}));
    ASSERT_TRUE(delivered(1));
    service->stop();  // the proxy holds a reference too
    service.reset();
    EXPECT_EQ(recording::logOf("~BrowserDVBService").size(), 1U);
    // The sanitizers report it if the thread, which takes the section, accesses the destroyed object.
    EXPECT_TRUE(recording::writeSection(name, "a", {2}));
    EXPECT_TRUE(eventually([&name] { return recording::waitingSections(name) == 0; }));
    EXPECT_EQ(client.sections().size(), 1U);
}

class ADeliveryWithoutMemory : public ADelivery, public testing::WithParamInterface<bool> {};

TEST_P(ADeliveryWithoutMemory, ReleasesItsCreator) {
    const bool hasObject = GetParam();
    failingObjects = !hasObject;
    failingArrays = true;
    const bool hasQueue = service->createIPCChannelForSectionData();
    failingObjects = false;
    failingArrays = false;
    EXPECT_TRUE(hasQueue);
    ASSERT_EQ(messagesOf("thread_proc_section_data").size(), 1U);
    EXPECT_THAT(messagesOf("thread_proc_section_data")[0],
                testing::MatchesRegex(hasObject ? "Error Allocate memory: 0x[0-9a-f]+,\\(nil\\)\n"
                                                : "Error Allocate memory: \\(nil\\),\\(nil\\)\n"));
    EXPECT_TRUE(recording::sent().empty()) << "the DTV service is not told of the queue";
}

INSTANTIATE_TEST_SUITE_P(WithoutMemory, ADeliveryWithoutMemory, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& of) {
                             return std::string(of.param ? "ForTheBuffer" : "AtAll");
                         });

TEST_F(ADelivery, DropsASectionThatDoesNotFitTheBuffer) {
    openFilter("a");
    std::vector<std::uint8_t> bytes(velmora::msgqueue::SectionDataIPCMessage::kBufferSize);
    velmora::msgqueue::SectionDataIPCMessage message;
    message.sessionName = "a";
    message.data = bytes.data();
    message.dataLength = 8192;
    BrowserDVBServiceTestAccess::deliver(*service, message);
    EXPECT_EQ(client.sections().size(), 1U);
    message.dataLength = 8193;
    BrowserDVBServiceTestAccess::deliver(*service, message);
    message.data = nullptr;
    EXPECT_EQ(client.sections().size(), 1U);
    EXPECT_THAT(recording::logOf("thread_proc_section_data").back(),
                logged::tagged(kFailure, kTag, kFile, "thread_proc_section_data",
                               "Section of 8193 bytes does not fit the buffer of 8192: a\n"));
}

TEST_F(ADelivery, RefusesAThreadWithoutItsObject) {
    allocations = 0;
    EXPECT_EQ(velmora::dvbservice::BrowserDVBService::thread_proc_section_data(nullptr), nullptr);
    EXPECT_EQ(allocations, 0) << "the object is looked at first";
    EXPECT_THAT(messagesOf("thread_proc_section_data"), testing::ElementsAre("Invalid Thread data.\n"));
}

TEST_F(ADelivery, NeverComesThroughTheRetiredEvent) {
    openFilter("a");
    recording::reset();
    injectEvent<messages::OnFilterSectionDataArrived>("a", "bytes", 7U);
    EXPECT_THAT(messagesOf("onFilterSectionDataArrived"),
                testing::ElementsAre("Sending section through shared memory is removed due to performance issue. "
                                     "Please using IPC message instead.\n",
                                     "session: a, len:7\n"));
    ASSERT_TRUE(recording::writeSection(queue(), "a", {9}));
    ASSERT_TRUE(delivered(1));
    EXPECT_EQ(client.sections()[0].bytes, std::vector<unsigned char>{9});
}
