// SectionFilter: what it sends, what it delivers, and when it closes.
#include "section_filter_fixture.h"

namespace {

using Bytes = std::vector<unsigned char>;

/// A whole section with a made-up CRC_32.
Bytes numbered(unsigned char checksum) {
    return {0x4E, 0xB0, 9, 0, 1, 0xC1, 0, 0, 0, 0, 0, checksum};
}

}  // namespace

TEST_F(ASectionFilter, OpensWithItsPatternAndClosesAtItsEnd) {
    std::string session;
    {
        const SectionFilter filter(api, 18, SectionPattern::table(0x50, 0xF0).extension(28106).then(1, 0x3F),
                                   receiver());
        EXPECT_TRUE(filter.isOpen());
        session = lastSession();
        ASSERT_EQ(sentCount(kFilterOpen), 1U);
        const auto record = recordOf(session);
        ASSERT_TRUE(record);
        EXPECT_EQ(record->pid(), 18U);
        EXPECT_THAT(record->mask(), testing::ElementsAre(0x50, 0x6D, 0xCA, 0x01));
        EXPECT_THAT(record->mask_bits(), testing::ElementsAre(0xF0, 0xFF, 0xFF, 0x3F));
        EXPECT_EQ(sentCount(kFilterClose), 0U);
    }
    EXPECT_EQ(session.size(), 45U);
    EXPECT_EQ(sentCount(kFilterClose), 1U);
    EXPECT_FALSE(recordOf(session));
    EXPECT_FALSE(service->isRegistered(&SectionRouter::theOne()));
}

TEST_F(ASectionFilter, DeliversItsSectionsAndOnlyThose) {
    const SectionFilter filter = open();
    const std::string session = lastSession();
    const auto others = std::make_shared<ReceivedSections>();
    const SectionFilter other(
        api, 18, SectionPattern::any(),
        [others](const unsigned char* section, unsigned int length) { others->add(section, length); });
    write(session, {1, 2, 3});
    write(lastSession(), {4});
    write(session, {1, 2, 3});
    waitForDelivery();
    EXPECT_THAT(received->all(), testing::ElementsAre(Bytes{1, 2, 3}, Bytes{1, 2, 3}));
    EXPECT_THAT(others->all(), testing::ElementsAre(Bytes{4}));
}

TEST_F(ASectionFilter, IsClosedOnceItIsRefused) {
    answerWith(-1);
    const SectionFilter filter = open();
    EXPECT_FALSE(filter.isOpen());
    EXPECT_EQ(sentCount(kFilterClose), 1U);
    EXPECT_FALSE(recordOf(lastSession()));
}

TEST_F(ASectionFilter, WithoutAFilterDoesNothing) {
    SectionFilter none;
    EXPECT_FALSE(none.isOpen());
    none.close();
    const SectionFilter moved = std::move(none);
    EXPECT_FALSE(moved.isOpen());
    EXPECT_TRUE(recording::sent().empty());
}

TEST_F(ASectionFilter, TakesItsSectionsAlongWhenItIsMoved) {
    SectionFilter first = open();
    const std::string session = lastSession();
    SectionFilter second = std::move(first);
    EXPECT_TRUE(second.isOpen());
    EXPECT_EQ(sentCount(kFilterClose), 0U);
    write(session, {1});
    waitForDelivery();
    EXPECT_EQ(receivedCount(), 1U);
}

TEST_F(ASectionFilter, ClosesItsOldFilterWhenAnotherIsMovedIntoIt) {
    SectionFilter filter = open();
    const std::string old = lastSession();
    SectionFilter other = open();
    const std::string session = lastSession();
    filter = std::move(other);
    EXPECT_TRUE(filter.isOpen());
    EXPECT_FALSE(recordOf(old));
    EXPECT_TRUE(recordOf(session));
    SectionFilter& itself = filter;
    filter = std::move(itself);
    EXPECT_TRUE(filter.isOpen());
    filter = SectionFilter();
    EXPECT_FALSE(recordOf(session));
    EXPECT_EQ(sentCount(kFilterClose), 2U);
}

TEST_F(ASectionFilter, ClosesOnce) {
    SectionFilter filter = open();
    const std::string session = lastSession();
    EXPECT_TRUE(SectionRouter::theOne().find(session));
    filter.close();
    filter.close();
    EXPECT_FALSE(filter.isOpen());
    EXPECT_FALSE(SectionRouter::theOne().find(session));
    EXPECT_EQ(sentCount(kFilterClose), 1U);
}

TEST_F(ASectionFilter, DropsASectionThatComesAfterItsEnd) {
    SectionFilter filter = open();
    const std::string session = lastSession();
    // What the delivery thread has when it took a section before the filter was closed, and calls only now.
    auto* const taken = recordOf(session)->client();
    const auto found = SectionRouter::theOne().find(session);
    filter.close();
    const unsigned char section[] = {1};
    taken->onSectionData(session, 18, section, 1);
    found->deliver(section, 1);
    EXPECT_EQ(receivedCount(), 0U);
}

TEST_F(ASectionFilter, MayBeClosedByItsReceiver) {
    SectionFilter filter;
    filter = open(SectionDelivery::every, [&filter] { filter.close(); });
    const std::string session = lastSession();
    write(session, {1});
    write(session, {2});
    waitForDelivery();
    EXPECT_THAT(received->all(), testing::ElementsAre(Bytes{1}));
    EXPECT_FALSE(filter.isOpen());
    EXPECT_FALSE(recordOf(session));
}

TEST_F(ASectionFilter, MayBeOpenedByAReceiver) {
    SectionFilter second;
    const SectionFilter first = open(SectionDelivery::once, [&] { second = open(); });
    write(lastSession(), {1});
    waitForDelivery();
    EXPECT_TRUE(second.isOpen());
    EXPECT_FALSE(first.isOpen());
}

TEST_F(ASectionFilter, OfOneSectionClosesAfterIt) {
    std::string session;
    {
        const SectionFilter filter = open(SectionDelivery::once);
        session = lastSession();
        EXPECT_TRUE(filter.isOpen());
        auto* const taken = recordOf(session)->client();
        write(session, {1});
        write(session, {2});
        waitForDelivery();
        EXPECT_FALSE(filter.isOpen());
        EXPECT_FALSE(recordOf(session));
        const unsigned char late[] = {3};
        taken->onSectionData(session, 18, late, 1);
    }
    EXPECT_THAT(received->all(), testing::ElementsAre(Bytes{1}));
    const auto sent = recording::sent();
    EXPECT_EQ(std::count_if(sent.begin(), sent.end(),
                            [&session](const recording::SentMessage& message) {
                                const std::string wire(message.wire.begin(), message.wire.end());
                                return message.header.messageId == kFilterClose &&
                                       wire.find(session) != std::string::npos;
                            }),
              1)
        << "its end does not close it again";
}

TEST_F(ASectionFilter, OfChangesLeavesOutRepetitions) {
    const SectionFilter filter = open(SectionDelivery::changed);
    const std::string session = lastSession();
    for (const unsigned char checksum : Bytes{7, 7, 8, 8, 7}) {
        write(session, numbered(checksum));
    }
    waitForDelivery();
    EXPECT_THAT(received->all(), testing::ElementsAre(numbered(7), numbered(8), numbered(7)));
}

TEST_F(ASectionFilter, MayBeThePmtOfAService) {
    {
        const SectionFilter filter = SectionFilter::onPmtOf(api, 28106, receiver());
        EXPECT_TRUE(filter.isOpen());
        ASSERT_EQ(sentCount(kStartPmtRequest), 1U);
        const std::vector<std::uint8_t> wire = recording::sent().back().wire;
        write(std::string(wire.end() - 45, wire.end()), {2, 0xB0});
        waitForDelivery();
    }
    EXPECT_THAT(received->all(), testing::ElementsAre(Bytes{2, 0xB0}));
    EXPECT_EQ(sentCount(kStopPmtRequest), 1U);
    EXPECT_FALSE(service->isRegistered(&SectionRouter::theOne()));
}
