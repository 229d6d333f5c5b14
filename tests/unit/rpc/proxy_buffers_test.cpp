// The heap buffers of outgoing records: how many there are, what they contain, and that all are freed.
#include <array>
#include <cstdlib>
#include <new>

#include "message_transfer.h"
#include "proxy_fixture.h"
#include "some_values.h"

using namespace lo::browserdvbservice;

namespace {

using Sizes = std::vector<std::size_t>;

std::size_t countOf(const std::string& word, const std::string& text) {
    std::size_t count = 0;
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) {
        ++count;
    }
    return count;
}

/// A nested record with bytes in both of its sequences.
OpenFilterMatchMask_t filledMatchMask() {
    OpenFilterMatchMask_t matchMask;
    matchMask.mask = {1, 2};
    matchMask.maskBits = {3, 4, 5};
    return matchMask;
}

/// A structure that is created in memory with old non-zero bytes.
template <typename Structure>
std::vector<unsigned char> bytesOfANew() {
    alignas(Structure) std::array<unsigned char, sizeof(Structure)> memory{};
    memory.fill(0xFF);
    new (memory.data()) Structure;
    return {memory.begin(), memory.end()};
}

}  // namespace

TEST_F(AProxy, KeepsTextBuffersUntilTheSend) {
    ServiceInterface& service = *proxy;
    std::size_t heldAtSend = 0;
    recording::setSendAction([&heldAtSend](const recording::SentMessage&) {
        heldAtSend = seams::heldBuffers().size();
        return 0;
    });
#define EXPECTED_COMMAND(operation, Message, decimal, hexadecimal, bytes, layout)                          \
    seams::watchHeap();                                                                                    \
    callWithSomeValues(service, &ServiceInterface::operation);                                             \
    EXPECT_EQ(heldAtSend, countOf("string", layout) + countOf("TuneInfoChannel", layout)) << #operation;   \
    EXPECT_EQ(seams::allocations(), Sizes(heldAtSend, 1)) << #operation << ": a terminator for each text"; \
    EXPECT_THAT(seams::heldBuffers(), testing::IsEmpty()) << #operation;
#include "expected_messages.inc"
}

TEST_F(AProxy, AllocatesTextsWithTerminatorAndBytesWithout) {
    frame::MsgIds ids;
    seams::watchHeap();
    proxy->cmdUpdateIPCChannelNames(ids, {}, "first", "", std::string("a\0b", 3));
    EXPECT_EQ(seams::allocations(), Sizes({6, 1, 4}));
    seams::watchHeap();
    proxy->cmdFilterOpen(ids, {}, "ab", 1, filledMatchMask());
    EXPECT_EQ(seams::allocations(), Sizes({3, 2, 3}));
    TuneInfoChannel channel;
    channel.dsd = "xyz";
    seams::watchHeap();
    proxy->cmdTuneToService(ids, {}, channel);
    EXPECT_EQ(seams::allocations(), Sizes({4}));
}

TEST_F(AProxy, AllocatesNothingForASequenceWithoutBytes) {
    frame::MsgIds ids;
    OpenFilterMatchMask_t matchMask;
    matchMask.maskBits = {9};
    seams::watchHeap();
    proxy->cmdFilterOpen(ids, {}, "", 1, matchMask);
    EXPECT_EQ(seams::allocations(), Sizes({1, 1}));
    EXPECT_THAT(seams::heldBuffers(), testing::IsEmpty());
}

TEST_F(AProxy, FreesItsBuffersWhenTheSendFailsOrThrows) {
    frame::MsgIds ids;
    recording::setSendResult(-5);
    seams::watchHeap();
    EXPECT_EQ(proxy->cmdFilterOpen(ids, {}, "session", 1, filledMatchMask()), -5);
    EXPECT_THAT(seams::heldBuffers(), testing::IsEmpty());
    recording::setSendAction([](const recording::SentMessage&) -> int { throw std::runtime_error("send"); });
    EXPECT_THROW(proxy->cmdFilterOpen(ids, {}, "session", 1, filledMatchMask()), std::runtime_error);
    EXPECT_THROW(proxy->cmdTuneToService(ids, {}, TuneInfoChannel()), std::runtime_error);
    EXPECT_EQ(seams::allocations().size(), 7U);
    EXPECT_THAT(seams::heldBuffers(), testing::IsEmpty());
}

TEST_F(AProxy, SendsNothingWhenMemoryEnds) {
    frame::MsgIds ids;
    for (const std::size_t number : {0U, 1U, 2U}) {
        seams::watchHeap();
        seams::failAllocation(number);
        EXPECT_THROW(proxy->cmdUpdateIPCChannelNames(ids, {}, "first", "second", "third"), std::bad_alloc);
        EXPECT_EQ(seams::allocations().size(), number);
        EXPECT_THAT(seams::heldBuffers(), testing::IsEmpty());
    }
    EXPECT_TRUE(recording::sent().empty());
}

TEST_F(AProxy, FreesANestedRecordThatMemoryEndedIn) {
    frame::MsgIds ids;
    for (const std::size_t number : {0U, 1U, 2U}) {
        seams::watchHeap();
        seams::failAllocation(number);
        EXPECT_THROW(proxy->cmdFilterOpen(ids, {}, "session", 1, filledMatchMask()), std::bad_alloc);
        EXPECT_EQ(seams::allocations().size(), number);
        EXPECT_THAT(seams::heldBuffers(), testing::IsEmpty());
    }
    EXPECT_TRUE(recording::sent().empty());
}

TEST(ATextCarrier, EndsInAZeroBehindItsLastByte) {
    seams::watchHeap();
    const _ovxDeserString_struct carrier = wire::String::store(std::string("a\0b", 3));
    EXPECT_EQ(carrier.length, 3U);
    EXPECT_EQ(std::string(carrier.data, 4), std::string("a\0b\0", 4));
    wire::String::release(carrier);
    EXPECT_THAT(seams::heldBuffers(), testing::IsEmpty());
    seams::reset();
}

TEST(AByteVectorCarrier, WithoutBytesHasNoBuffer) {
    std::uint8_t byte = 1;
    const _ovxDeserVectorU8_struct carrier = wire::ByteVector::store({0, &byte});
    EXPECT_EQ(carrier.count, 0U);
    EXPECT_EQ(carrier.data, nullptr);
}

TEST(AConversionStructure, BeginsZeroed) {
    EXPECT_THAT(bytesOfANew<_TuneInfoChannel_struct>(), testing::Each(0));
    EXPECT_THAT(bytesOfANew<_TuneInfoComponent_struct>(), testing::Each(0));
    EXPECT_THAT(bytesOfANew<_OpenFilterMatchMask_t_struct>(), testing::Each(0));
}

TEST(AConversionStructure, FreesItsBuffersBeforeItTakesOthers) {
    seams::watchHeap();
    _OpenFilterMatchMask_t_struct structure(filledMatchMask());
    EXPECT_EQ(seams::heldBuffers().size(), 2U);
    OpenFilterMatchMask_t other;
    other.maskBits = {9};
    structure = other;
    EXPECT_EQ(seams::heldBuffers(), std::vector<void*>({structure.maskBits.data}));
    EXPECT_EQ(seams::allocations(), Sizes({2, 3, 1}));
    structure.release();
    EXPECT_THAT(seams::heldBuffers(), testing::IsEmpty());
    EXPECT_EQ(structure.maskBits.count, 0U);
    EXPECT_EQ(structure.maskBits.data, nullptr);
    seams::reset();
}

TEST(AConversionStructure, FreesAChannelsOldText) {
    seams::watchHeap();
    TuneInfoChannel channel;
    channel.dsd = "first";
    _TuneInfoChannel_struct structure(channel);
    channel.dsd = "second";
    structure = channel;
    EXPECT_EQ(seams::heldBuffers(), std::vector<void*>({structure.dsd.data}));
    structure.release();
    EXPECT_THAT(seams::heldBuffers(), testing::IsEmpty());
    seams::reset();
}

TEST(TheHook, LeavesAnEmptyArrayWhenTheProxyThrows) {
    seams::watchHeap();
    seams::setNameHook([] { throw std::runtime_error("no name"); });
    EXPECT_THROW(CreateBrowserDvbServiceProxy(), std::runtime_error);
    EXPECT_EQ(seams::allocations(), Sizes({2 * sizeof(void*)}));
    const std::vector<void*> left = seams::heldBuffers();
    ASSERT_EQ(left.size(), 1U);
    const auto* const members = static_cast<frame::AbstractApplication* const*>(left[0]);
    EXPECT_EQ(members[0], nullptr);
    EXPECT_EQ(members[1], nullptr);
    std::free(left[0]);
    seams::reset();
}
