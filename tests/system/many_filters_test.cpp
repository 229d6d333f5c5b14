// Many filters at once over the real queue, against a service that sends as fast as it can.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "section_filters.h"
#include "service_process.h"

namespace {

const std::string kRunDirectory = OwnRunDirectory::instance().path();
constexpr std::size_t kFilters = 32;

class FloodingProcess : public ChildProcess {
public:
    explicit FloodingProcess(const std::vector<std::string>& arguments)
        : ChildProcess(FLOODING_SERVICE, arguments, "flooding") {
        eventually([this] { return output().find("ready") != std::string::npos; });
    }
};

std::uint32_t numberOf(const unsigned char* section) {
    return static_cast<std::uint32_t>(section[3]) << 24U | static_cast<std::uint32_t>(section[4]) << 16U |
           static_cast<std::uint32_t>(section[5]) << 8U | section[6];
}

/// Counts its sections, and sections out of order. Clients are never deleted, because a section may still arrive.
class CountingClient final : public velmora::dtv::SectionFilterClient {
public:
    std::atomic<std::uint32_t> received{0};
    std::atomic<std::uint32_t> outOfOrder{0};

    void onSectionData(const std::string&, unsigned int, const unsigned char* data, unsigned int length) override {
        constexpr unsigned int kLength = 7;
        const bool next = length == kLength && numberOf(data) == received.load();
        outOfOrder += next ? 0 : 1;
        ++received;
    }
};

void waitForService() {
    std::string error;
    auto* const api = dvbshell::loadDvbApi(LIBRARY_FILE, error);
    ASSERT_NE(api, nullptr) << error;
    ASSERT_TRUE(eventually([api] { return api->sendPtsRequest(0) == 0; }));
}

/// A filter that its thread opens and closes repeatedly, or that closes itself when a section arrives.
class ReopeningClient final : public velmora::dtv::SectionFilterClient {
public:
    ReopeningClient(velmora::dtv::DVBSectionInterface& newFilters, bool newClosesItself)
        : filters(newFilters), closesItself(newClosesItself) {}

    void onSectionData(const std::string& sessionName, unsigned int, const unsigned char*, unsigned int) override {
        ++received;
        if (closesItself && open.exchange(false)) {
            failures += filters.stopSection(this, sessionName) ? 0 : 1;
            ++closed;
        }
    }
    /// Opens a filter and closes it after a section has arrived, unless the client has closed it.
    void cycle() {
        const std::string session = filters.generateSessionName();
        const std::uint32_t before = received;
        const std::uint32_t closedBefore = closed;
        open = true;
        failures += filters.startSection(this, session, 0x100, nullptr, nullptr, 0) ? 0 : 1;
        came += eventually([&] { return received != before; }) ? 0 : 1;
        if (closesItself) {
            came += eventually([&] { return closed != closedBefore; }) ? 0 : 1;
        } else {
            failures += filters.stopSection(this, session) ? 0 : 1;
        }
        ++cycles;
    }

    std::atomic<std::uint32_t> received{0};
    std::atomic<std::uint32_t> closed{0};
    std::atomic<std::uint32_t> failures{0};  // failed openings and closings
    std::atomic<std::uint32_t> came{0};      // waits in vain
    std::uint32_t cycles = 0;                // cycles of the client's thread

private:
    velmora::dtv::DVBSectionInterface& filters;
    bool closesItself;
    std::atomic<bool> open{false};
};

}  // namespace

TEST(ManyFilters, DeliverAHundredThousandSectionsInOrder) {
    constexpr std::uint32_t kSections = 100000;
    constexpr std::uint32_t kSectionsEach = kSections / kFilters;
    const FloodingProcess service({"row", std::to_string(kFilters), std::to_string(kSections)});
    waitForService();
    velmora::dtv::DVBSectionInterface& filters = sectionFilters();
    static auto& clients = *new std::vector<CountingClient>(kFilters);
    for (CountingClient& client : clients) {
        ASSERT_TRUE(filters.startSection(&client, filters.generateSessionName(), 0x100, nullptr, nullptr, 0));
    }
    for (const CountingClient& client : clients) {
        EXPECT_TRUE(eventually([&client] { return client.received == kSectionsEach; }, std::chrono::seconds(100)))
            << client.received;
        EXPECT_EQ(client.outOfOrder, 0U);
    }
}

TEST(ManyFilters, OpenAndCloseInManyThreads) {
    constexpr std::size_t kThreads = 8;
    constexpr std::chrono::seconds kDuration{30};
    const FloodingProcess service({"stream"});
    waitForService();
    velmora::dtv::DVBSectionInterface& filters = sectionFilters();
    static auto& clients = *new std::vector<std::unique_ptr<ReopeningClient>>;
    for (std::size_t index = 0; index < kFilters; ++index) {
        clients.push_back(std::make_unique<ReopeningClient>(filters, index % 2 == 0));
    }
    const auto end = std::chrono::steady_clock::now() + kDuration;
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([thread, end] {
            while (std::chrono::steady_clock::now() < end) {
                for (std::size_t index = thread; index < kFilters; index += kThreads) {
                    clients[index]->cycle();
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::uint32_t cycles = 0;
    for (const auto& client : clients) {
        EXPECT_EQ(client->failures, 0U);
        EXPECT_EQ(client->came, 0U);
        EXPECT_GT(client->cycles, 0U);
        cycles += client->cycles;
    }
    RecordProperty("cycles", static_cast<int>(cycles));
}
