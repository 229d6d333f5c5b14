// Self-closing filters on the process's one service object, with a DTV service that confirms everything.
#pragma once

#include <optional>

#include "dvb_helpers/section_filter.h"
#include "filter_fixture.h"
#include "locks/lock.h"
#include "section_filter_api.h"
#include "waits_for_lock.h"

using velmora::dtv::helpers::SectionDelivery;
using velmora::dtv::helpers::SectionFilter;
using velmora::dtv::helpers::SectionPattern;
using velmora::dtv::helpers::SectionRouter;

/// The bytes of the sections that a receiver got.
class ReceivedSections {
public:
    void add(const unsigned char* section, unsigned int length) {
        const locks::Lock lock(mutex);
        received.emplace_back(section, section + length);
    }
    std::vector<std::vector<unsigned char>> all() const {
        const locks::Lock lock(mutex);
        return received;
    }

private:
    mutable std::mutex mutex;
    std::vector<std::vector<unsigned char>> received GUARDED_BY(mutex);
};

class ASectionFilter : public AFilter {
protected:
    static constexpr std::uint32_t kFilterOpen = 0x28671243;
    static constexpr std::uint32_t kFilterClose = 0x28671244;
    static constexpr std::uint32_t kStartPmtRequest = 0x28671247;
    static constexpr std::uint32_t kStopPmtRequest = 0x28671248;

    ASectionFilter() {
        using velmora::dvbservice::BrowserDVBService;
        service = boost::shared_ptr<BrowserDVBService>(BrowserDVBService::getInstance(), [](BrowserDVBService*) {});
        recording::reset();
        answerWith(0);
    }

    SectionFilter open(
        SectionDelivery delivery = SectionDelivery::every, std::function<void()> reaction = [] {}) {
        return SectionFilter(api, 18, SectionPattern::table(0x4E), receiver(std::move(reaction)), delivery);
    }
    velmora::dtv::helpers::SectionReceiver receiver(std::function<void()> reaction = [] {}) {
        return
            [received = received, reaction = std::move(reaction)](const unsigned char* section, unsigned int length) {
                received->add(section, length);
                reaction();
            };
    }
    static std::size_t sentCount(std::uint32_t message) {
        const std::vector<recording::SentMessage> sent = recording::sent();
        return static_cast<std::size_t>(std::count_if(
            sent.begin(), sent.end(), [message](const auto& each) { return each.header.messageId == message; }));
    }
    /// The session of the last filter that was opened, or of the last one on that PID.
    static std::string lastSession() { return sessionOf(std::nullopt); }
    static std::string sessionOf(std::optional<unsigned int> pid) {
        std::string session;
        for (const recording::SentMessage& message : recording::sent()) {
            const std::vector<std::uint8_t>& wire = message.wire;
            if (message.header.messageId == kFilterOpen &&
                (!pid || *pid == (static_cast<unsigned int>(wire[10]) << 8U | wire[11]))) {
                session.assign(wire.begin() + 28, wire.begin() + 28 + wire[3]);
            }
        }
        return session;
    }
    void write(const std::string& session, const std::vector<unsigned char>& section) {
        ASSERT_TRUE(recording::writeSection(BrowserDVBServiceTestAccess::queueName(*service), session, section));
    }
    /// Waits until the delivery thread has handled all sections so far: it handles them in order, and this one last.
    void waitForDelivery() {
        const auto last = std::make_shared<std::promise<void>>();
        const SectionFilter marker(api, 0, SectionPattern::any(),
                                   [last](const unsigned char*, unsigned int) { last->set_value(); });
        write(sessionOf(0), {0});  // a receiver may have opened another one meanwhile
        ASSERT_TRUE(isReady(last->get_future()));
    }
    std::size_t receivedCount() const { return received->all().size(); }

    velmora::dtv::DVBSectionInterface& api = *velmora::dvbservice::SectionFilterAPI::getInstance();
    const std::shared_ptr<ReceivedSections> received = std::make_shared<ReceivedSections>();
};
