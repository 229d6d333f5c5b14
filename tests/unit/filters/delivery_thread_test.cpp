// The delivery thread: its start, its end after a receive error, and what it delivers to clients.
#include <boost/interprocess/exceptions.hpp>
#include <future>
#include <stdexcept>
#include <thread>

#include "eventually.h"
#include "filter_fixture.h"
#include "locks/lock.h"
#include "waits_for_lock.h"
#include "wrapped_time.h"

namespace {

/// Reports the end of the thread that owns it.
class ThreadsEnd {
public:
    ~ThreadsEnd() {
        if (promise) {
            promise->set_value();
        }
    }
    std::promise<void>* promise = nullptr;
};

void tellOfThisThreadsEnd(std::promise<void>& promise) {
    thread_local ThreadsEnd end;
    end.promise = &promise;
}

class ADeliveryThread : public AFilter {
protected:
    std::string queue() { return BrowserDVBServiceTestAccess::queueName(*service); }
    bool create() { return service->createIPCChannelForSectionData(); }
    static void* withoutObject() { return velmora::dvbservice::BrowserDVBService::thread_proc_section_data(nullptr); }
    void openFilter(const std::string& session) {
        answerWith(0);
        ASSERT_EQ(service->startSection(&client, session, 100, nullptr, nullptr, 0), 0);
    }
    /// Opens a filter and waits until the delivery thread has written its start lines.
    void openFirstFilter() {
        openFilter("a");
        ASSERT_TRUE(recording::waitForLog("thread_proc_section_data create Signal 1"));
    }
    bool delivered(std::size_t count) {
        return eventually([&] { return client.sections().size() == count; });
    }
    /// Writes a section and waits until the client has run `reaction` on the delivery thread.
    void inDelivery(const std::function<void()>& reaction) {
        const auto done = std::make_shared<std::promise<void>>();
        client.reaction = [=] {
            reaction();
            done->set_value();
        };
        ASSERT_TRUE(recording::writeSection(queue(), "a", {1}));
        ASSERT_TRUE(isReady(done->get_future()));
    }
    /// Gives another thread time to end this process; exits with 0 if it does not.
    [[noreturn]] static void waitForTheEnd() {
        std::this_thread::sleep_for(std::chrono::seconds(20));
        std::_Exit(0);
    }
};

}  // namespace

TEST_F(ADeliveryThread, TellsTheQueuesNameWhileItsCreatorWaits) {
    std::vector<std::string> atSend;
    std::thread::id sender;
    recording::setSendAction([&](const recording::SentMessage&) {
        atSend = logged::story();
        sender = std::this_thread::get_id();
        return -107;
    });
    EXPECT_TRUE(create()) << "whatever the send's result";
    EXPECT_THAT(atSend, testing::ElementsAre("-> createIPCChannelForSectionData",
                                             "createIPCChannelForSectionData: Wait thread_proc_section_data create "
                                             "0\n\n"));
    EXPECT_NE(sender, std::this_thread::get_id());
    EXPECT_EQ(recording::sent().size(), 1U);
    EXPECT_TRUE(recording::waitForLog("thread_proc_section_data create Signal 1"));
    EXPECT_THAT(logged::story(), testing::UnorderedElementsAre(
                                     "-> createIPCChannelForSectionData",
                                     "createIPCChannelForSectionData: Wait thread_proc_section_data create 0\n\n",
                                     "createIPCChannelForSectionData: thread_proc_section_data create OK 2\n\n",
                                     "<- createIPCChannelForSectionData",
                                     "thread_proc_section_data: thread_proc_section_data create Signal 1\n\n"));
}

TEST_F(ADeliveryThread, ReleasesItsCreatorBeforeItsLine) {
    std::promise<void> goOn;
    std::shared_future<void> mayGoOn = goOn.get_future().share();
    recording::setLogAction([mayGoOn](const recording::LogLine& line) {
        if (line.message.rfind("thread_proc_section_data create Signal 1", 0) == 0) {
            mayGoOn.wait();
        }
    });
    std::future<bool> creator = std::async(std::launch::async, [this] { return create(); });
    EXPECT_TRUE(isReady(creator)) << "the start lock is held at the line";
    goOn.set_value();
    EXPECT_TRUE(creator.get());
    recording::setLogAction(nullptr);
}

TEST_F(ADeliveryThread, ReleasesTheStartLockBeforeTheCreatorContinues) {
    bool wasFree = false;
    std::future<void*> other;
    recording::setLogAction([&](const recording::LogLine& line) {
        if (line.message.rfind("thread_proc_section_data create OK 2", 0) == 0) {
            other = std::async(std::launch::async, &withoutObject);
            wasFree = isReady(other);
        }
    });
    EXPECT_TRUE(create());
    recording::setLogAction(nullptr);
    EXPECT_TRUE(wasFree);
}

TEST_F(ADeliveryThread, IsStartedUnderTheStartLock) {
    std::future<void*> other;
    std::future_status during = std::future_status::ready;
    recording::setLogAction([&](const recording::LogLine& line) {
        if (line.message.rfind("Wait thread_proc_section_data create 0", 0) == 0) {
            other = std::async(std::launch::async, &withoutObject);
            during = other.wait_for(std::chrono::milliseconds(100));
        }
    });
    EXPECT_TRUE(create());
    recording::setLogAction(nullptr);
    EXPECT_EQ(during, std::future_status::timeout) << "whoever takes the lock waits until the creator does";
    EXPECT_EQ(other.get(), nullptr);
}

TEST_F(ADeliveryThread, WithoutAnObjectReleasesTheCreator) {
    recording::setThreadCreateResult(EAGAIN);
    std::future<bool> creator = std::async(std::launch::async, [this] { return create(); });
    ASSERT_TRUE(recording::waitForLog("Wait thread_proc_section_data create 0"));
    EXPECT_EQ(creator.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout)
        << "nobody looks at whether the thread was made";
    EXPECT_EQ(withoutObject(), nullptr);
    ASSERT_TRUE(isReady(creator));
    EXPECT_TRUE(creator.get());
    EXPECT_TRUE(BrowserDVBServiceTestAccess::hasQueue(*service));
    EXPECT_TRUE(recording::sent().empty());
    EXPECT_TRUE(create()) << "the queue is there";
    EXPECT_THAT(messagesOf("thread_proc_section_data"), testing::ElementsAre("Invalid Thread data.\n"));
}

TEST_F(ADeliveryThread, KeepsTheQueueNameWithoutAQueue) {
    recording::setQueueCreationFails(true);
    EXPECT_FALSE(create());
    EXPECT_FALSE(create()) << "each call tries again";
    EXPECT_EQ(messagesOf("createIPCChannelForSectionData").size(), 2U);
    EXPECT_TRUE(recording::threadsCreated().empty());
    EXPECT_TRUE(recording::sent().empty());
    service->updateIPCChannelNames();
    const std::vector<std::uint8_t> wire = theSent().wire;
    EXPECT_EQ(std::string(wire.begin() + 24, wire.end()), queue());
}

TEST_F(ADeliveryThread, IsMadeOnceThoughCreatorsCallAgain) {
    EXPECT_TRUE(create());
    ASSERT_TRUE(recording::waitForLog("thread_proc_section_data create Signal 1"));
    recording::reset();
    EXPECT_TRUE(create());
    EXPECT_THAT(logged::story(),
                testing::ElementsAre("-> createIPCChannelForSectionData", "<- createIPCChannelForSectionData"));
    EXPECT_TRUE(recording::threadsCreated().empty());
    EXPECT_EQ(recording::queueNames().size(), 1U);
}

TEST_F(ADeliveryThread, IsMadeOnceThoughCreatorsRace) {
    // Another object's creator holds the start lock, so that both creators find no queue and wait for the lock.
    static auto* const other = new boost::shared_ptr<velmora::dvbservice::BrowserDVBService>;
    other->reset(new velmora::dvbservice::BrowserDVBService);
    std::future<bool> creators[2];
    recording::setLogAction([&](const recording::LogLine& line) {
        if (line.message.rfind("Wait thread_proc_section_data create 0", 0) == 0 && !creators[0].valid()) {
            for (std::future<bool>& creator : creators) {
                creator = std::async(std::launch::async, [this] { return create(); });
            }
            for (const std::future<bool>& creator : creators) {
                EXPECT_EQ(creator.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
            }
        }
    });
    EXPECT_TRUE((*other)->createIPCChannelForSectionData());
    EXPECT_TRUE(creators[0].get());
    EXPECT_TRUE(creators[1].get());
    recording::setLogAction(nullptr);
    EXPECT_EQ(recording::threadsCreated().size(), 2U) << "one of the other object, one of this";
}

TEST_F(ADeliveryThread, HandsOnASectionWithoutBytes) {
    openFirstFilter();
    ASSERT_TRUE(recording::writeSection(queue(), "a", {}));
    ASSERT_TRUE(recording::writeSection(queue(), "a", {7, 8}));
    ASSERT_TRUE(delivered(2));
    EXPECT_TRUE(client.sections()[0].bytes.empty());
    EXPECT_EQ(client.sections()[0].pid, 100U);
    EXPECT_EQ(client.sections()[1].bytes.size(), 2U);
}

TEST_F(ADeliveryThread, HandsOnASectionOfAPmtRequestWithItsService) {
    ASSERT_EQ(service->startPMTRequest(&client, "pmt", 0xFFFF6DCA), 0);
    ASSERT_TRUE(recording::writeSection(queue(), "pmt", {2}));
    ASSERT_TRUE(delivered(1));
    EXPECT_EQ(client.sections()[0].session, "pmt");
    EXPECT_EQ(client.sections()[0].pid, 0xFFFF6DCAU);
}

TEST_F(ADeliveryThread, ReadsEverySectionIntoOneBuffer) {
    struct Looking final : velmora::dtv::SectionFilterClient {
        void onSectionData(const std::string&, unsigned int, const unsigned char* data, unsigned int) override {
            const locks::Lock lock(mutex);
            seen.push_back(data);
        }
        std::mutex mutex;
        std::vector<const unsigned char*> seen GUARDED_BY(mutex);
    };
    static Looking looking;
    answerWith(0);
    ASSERT_EQ(service->startSection(&looking, "a", 1, nullptr, nullptr, 0), 0);
    for (int count = 0; count < 3; ++count) {
        ASSERT_TRUE(recording::writeSection(queue(), "a", {1, 2, 3}));
    }
    ASSERT_TRUE(eventually([] {
        const locks::Lock lock(looking.mutex);
        return looking.seen.size() == 3;
    }));
    const locks::Lock lock(looking.mutex);
    EXPECT_NE(looking.seen[0], nullptr);
    EXPECT_EQ(looking.seen[1], looking.seen[0]);
    EXPECT_EQ(looking.seen[2], looking.seen[0]);
}

TEST_F(ADeliveryThread, HoldsNoLockDuringAClientsCall) {
    openFirstFilter();
    int freeLocks = -1;
    inDelivery([this, &freeLocks] {
        freeLocks = int{isFree(BrowserDVBServiceTestAccess::registryLock(*service))} +
                    int{isFree(BrowserDVBServiceTestAccess::handshakeLock(*service))};
    });
    EXPECT_EQ(freeLocks, 2);
}

TEST_F(ADeliveryThread, SendsNothingBackForASection) {
    openFirstFilter();
    recording::reset();
    for (std::size_t count = 1; count <= 2; ++count) {
        ASSERT_TRUE(recording::writeSection(queue(), "a", {1}));
        ASSERT_TRUE(delivered(count));
    }
    EXPECT_TRUE(recording::sent().empty());
    EXPECT_TRUE(logged::story().empty()) << "nor does it write a line";
}

TEST_F(ADeliveryThread, GoesOnAfterASectionThatItDrops) {
    openFirstFilter();
    service->saveFilter(FilterParameter::create(nullptr, "null", 1, nullptr, nullptr, 0));
    recording::reset();
    ASSERT_TRUE(recording::writeSection(queue(), "unknown", {1}));
    ASSERT_TRUE(recording::writeSection(queue(), "null", {2}));
    ASSERT_TRUE(recording::writeSection(queue(), "a", {3}));
    ASSERT_TRUE(delivered(1));
    EXPECT_EQ(client.sections()[0].bytes, std::vector<unsigned char>{3});
    EXPECT_THAT(logged::story(), testing::ElementsAre("thread_proc_section_data: Invalid Message for Client: (nil)\n"));
}

TEST_F(ADeliveryThread, EndsAfterAReceiveErrorAndItsPause) {
    static std::promise<void> ended;
    openFirstFilter();
    inDelivery([] { tellOfThisThreadsEnd(ended); });
    std::future<void> end = ended.get_future();
    recording::reset();
    const std::size_t pausesBefore = wrapped_time::pauses().size();
    ASSERT_TRUE(recording::failReceive(queue()));
    ASSERT_TRUE(isReady(end)) << "the thread goes on";
    const std::vector<useconds_t> pauses = wrapped_time::pauses();
    ASSERT_EQ(pauses.size(), pausesBefore + 1);
    EXPECT_EQ(pauses.back(), 100000U);
    EXPECT_THAT(logged::story(),
                testing::ElementsAre("thread_proc_section_data: Failed to received DTV data. Exception occured: "
                                     "Input/output error\n"));
    // The end is final: the queue exists, so no new thread is created.
    recording::reset();
    openFilter("b");
    EXPECT_TRUE(recording::threadsCreated().empty());
    ASSERT_TRUE(recording::writeSection(queue(), "b", {1}));
    EXPECT_EQ(recording::waitingSections(queue()), 1U);
    EXPECT_EQ(client.sections().size(), 1U);
}

TEST_F(ADeliveryThread, WritesTheErrorBeforeItsPause) {
    openFirstFilter();
    std::size_t pausesAtLine = 99;
    const std::size_t pausesBefore = wrapped_time::pauses().size();
    recording::setLogAction([&](const recording::LogLine& line) {
        if (line.message.rfind("Failed to received", 0) == 0) {
            pausesAtLine = wrapped_time::pauses().size();
        }
    });
    ASSERT_TRUE(recording::failReceive(queue()));
    ASSERT_TRUE(eventually([&] { return wrapped_time::pauses().size() > pausesBefore; }));
    recording::setLogAction(nullptr);
    EXPECT_EQ(pausesAtLine, pausesBefore);
}

TEST_F(ADeliveryThread, EndsTheProcessOnOtherQueueErrors) {
    EXPECT_EXIT(
        {
            openFirstFilter();
            recording::failReceive(queue(), std::make_exception_ptr(std::runtime_error("another error")));
            waitForTheEnd();
        },
        testing::KilledBySignal(SIGABRT), "another error");
}

TEST_F(ADeliveryThread, EndsTheProcessOnAClientError) {
    EXPECT_EXIT(
        {
            openFirstFilter();
            client.reaction = [] {
                throw boost::interprocess::interprocess_exception(boost::interprocess::error_info(EIO), "a client's");
            };
            recording::writeSection(queue(), "a", {1});
            waitForTheEnd();
        },
        testing::KilledBySignal(SIGABRT), "interprocess_exception");
}
