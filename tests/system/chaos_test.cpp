// Many browsers, killed at random moments.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <list>
#include <random>

#include "descriptors_of.h"
#include "service_process.h"

namespace {

const std::string kRunDirectory = OwnRunDirectory::instance().path();
constexpr std::size_t kBrowsers = 24;

/// DTV_CHAOS_SECONDS, or 15.
std::chrono::seconds duration() {
    constexpr int kUsual = 15;
    const char* const given = std::getenv("DTV_CHAOS_SECONDS");
    return std::chrono::seconds(given == nullptr ? kUsual : std::atoi(given));
}

/// A browser with a filter on a busy PID.
class FilteringBrowser : public ChildProcess {
public:
    explicit FilteringBrowser(const std::string& name)
        : ChildProcess(DVBSHELL, {"sections", "0x12", "--count", "1000000", "--seconds", "1000", "--hex"}, name) {}
};

/// Counts the section queues that a process has mapped.
std::size_t queuesOf(pid_t process) {
    std::ifstream maps("/proc/" + std::to_string(process) + "/maps");
    std::size_t count = 0;
    for (std::string line; std::getline(maps, line);) {
        count += line.find("memfd:section queue") != std::string::npos ? 1 : 0;
    }
    return count;
}

std::string statistics() {
    ChildProcess console(DTVCTL, {"--json", "statistics"}, "dtvctl");
    console.wait();
    return console.output();
}

bool isIdle() {
    const std::string text = statistics();
    return text.find(R"("browsers":[])") != std::string::npos && text.find(R"("filters":0)") != std::string::npos;
}

}  // namespace

TEST(TheReferenceService, KeepsNothingOfBrowsersThatAreKilled) {
    const ServiceProcess service;
    ASSERT_TRUE(eventually(isIdle));
    const std::size_t descriptors = descriptorsOf(service.pid());
    std::size_t started = 0;
    {
        std::mt19937 random(1);
        std::list<FilteringBrowser> browsers;
        const auto end = std::chrono::steady_clock::now() + duration();
        while (std::chrono::steady_clock::now() < end) {
            while (browsers.size() < kBrowsers) {
                browsers.emplace_back("browser" + std::to_string(started++ % kBrowsers));
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(random() % 60));  // the browsers run meanwhile
            const auto victim = std::next(browsers.begin(), static_cast<std::ptrdiff_t>(random() % browsers.size()));
            victim->end(SIGKILL);
            browsers.erase(victim);
        }
    }
    EXPECT_TRUE(eventually(isIdle)) << statistics();
    // The number before may include the console's own connection.
    EXPECT_TRUE(eventually([&] { return descriptorsOf(service.pid()) <= descriptors; }))
        << descriptorsOf(service.pid()) << " instead of " << descriptors;
    EXPECT_TRUE(eventually([&] { return queuesOf(service.pid()) == 0; })) << queuesOf(service.pid());
    FilteringBrowser last("last");
    EXPECT_TRUE(eventually([&] { return queuesOf(service.pid()) == 1; })) << "a queue is counted while it is open";
}
