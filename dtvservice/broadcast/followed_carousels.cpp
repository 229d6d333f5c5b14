// Subscribes carousels to their streams.
#include "followed_carousels.h"

#include "si/download.h"

namespace broadcast {

void FollowedCarousels::setPmt(const si::Pmt& pmt) {
    const News news = reader.setPmt(pmt);
    follow();
    tell(news);
}

void FollowedCarousels::setOtherPmt(const si::Pmt& pmt) {
    reader.setOtherPmt(pmt);
    follow();
}

/// Only what makes news, and control messages, can name further streams. Blocks come too often to look each time.
void FollowedCarousels::onSection(std::uint16_t pid, si::Bytes section) {
    const News news = reader.onSection(pid, section);
    if (!news.empty() || section.data[0] == si::kDownloadControlTableId) {
        follow();
    }
    tell(news);
}

void FollowedCarousels::follow() {
    for (const std::uint16_t service : reader.otherServices()) {
        std::string error;
        if (const std::optional<si::Pmt> pmt = si::parsePmt(pmtOf(service), error)) {
            reader.setOtherPmt(*pmt);
        }
    }
    const std::set<std::uint16_t> pids = reader.pids();
    for (auto each = subscriptions.begin(); each != subscriptions.end();) {
        each = pids.count(each->first) == 0 ? subscriptions.erase(each) : std::next(each);
    }
    for (const std::uint16_t pid : pids) {
        if (subscriptions.count(pid) == 0) {
            subscriptions.try_emplace(pid, demux, pid, [this, pid](si::Bytes section) { onSection(pid, section); });
        }
    }
}

void FollowedCarousels::tell(const News& news) const {
    if (!news.empty()) {
        listener(news);
    }
}

}  // namespace broadcast
