// How often the process asks for memory while messages and sections come, all threads together.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>

#include "questions.h"
#include "quiet_run_directory.h"
#include "sections.h"

extern "C" void* __libc_malloc(std::size_t size);

namespace {

std::atomic<std::int64_t> allocations{0};

constexpr std::int64_t kEach = 1000;

/// In `work`, after it has run once.
template <typename Work>
std::int64_t allocationsIn(Work work) {
    work();
    const std::int64_t before = allocations;
    work();
    return allocations - before;
}

}  // namespace

/// The C library's. The operators new and the library's own buffers end here.
extern "C" __attribute__((visibility("default"))) void* malloc(std::size_t size) {
    allocations.fetch_add(1, std::memory_order_relaxed);
    return __libc_malloc(size);
}

TEST(AQuestionAndItsAnswer, AskForNoMemory) {
    bench::Questions questions(0, 0);
    EXPECT_EQ(allocationsIn([&] { questions.ask(kEach); }), 0);
}

TEST(AnAnswerWithAText, AsksForMemoryOnceForTheText) {
    bench::Questions questions(0, 256);
    EXPECT_EQ(allocationsIn([&] { questions.ask(kEach); }), kEach);
}

TEST(AQuestionAndItsAnswer, AskForAsMuchMemoryWithAHundredListenersAsWithTen) {
    const auto allocationsWith = [](std::size_t listeners) {
        std::vector<std::shared_ptr<velmora::dtv::helpers::EmptyListener>> others(listeners);
        for (auto& other : others) {
            other = std::make_shared<velmora::dtv::helpers::EmptyListener>();
            bench::dvbApi().addListener(other);
        }
        bench::Questions questions(0, 0);
        return allocationsIn([&] { questions.ask(kEach); });
    };
    const std::int64_t few = allocationsWith(10);
    EXPECT_EQ(allocationsWith(90), few);  // beside the ten
}

class ASection : public testing::TestWithParam<std::int64_t> {};

TEST_P(ASection, AsksForNoMemoryWhateverTheNumberOfFilters) {
    bench::Sections sections(0, GetParam(), 1024);
    EXPECT_EQ(allocationsIn([&] { sections.take(kEach); }), 0);
}

INSTANTIATE_TEST_SUITE_P(Filters, ASection, testing::Values(1, 10, 1000));
