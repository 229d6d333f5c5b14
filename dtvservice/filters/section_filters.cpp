// Filters sections and writes them to the browsers' queues.
#include "section_filters.h"

#include "service_log.h"

namespace dtvservice {

bool passesFilter(si::Bytes section, const std::vector<std::uint8_t>& match, const std::vector<std::uint8_t>& mask) {
    constexpr std::size_t kLengthBytes = 2;
    for (std::size_t index = 0; index < match.size(); ++index) {
        const std::size_t at = index == 0 ? 0 : index + kLengthBytes;
        if (at >= section.size || ((section.data[at] ^ match[index]) & mask[index]) != 0) {
            return false;
        }
    }
    return true;
}

SectionFilters::~SectionFilters() {
    while (!browsers.empty()) {
        forget(browsers.begin()->first);
    }
}

std::vector<SectionFilters::Name> SectionFilters::follow(broadcast::Demux& newDemux) {
    std::vector<Name> ended;
    if (demux == &newDemux) {
        return ended;
    }
    for (auto& browser : browsers) {
        for (const auto& filter : browser.second.filters) {
            demux->unsubscribe(filter.second.subscription);
            ended.emplace_back(browser.first, filter.first);
        }
        browser.second.filters.clear();
    }
    demux = &newDemux;
    return ended;
}

bool SectionFilters::setQueue(Peer peer, const std::string& name) {
    return browsers[peer].queue.open(peer, name);
}

/// The conditions that filters and PMT requests have in common.
bool SectionFilters::mayOpen(Peer peer, Browser& browser, const std::string& session, std::string& error) {
    if (session.size() > kLongestSession) {
        error = "the session's name has " + std::to_string(session.size()) + " bytes, more than " +
                std::to_string(kLongestSession);
    } else if (browser.filters.size() >= kMostFilters && browser.filters.count(session) == 0) {
        error = "the browser has " + std::to_string(kMostFilters) + " filters and PMT requests, the most possible";
    } else if (!browser.queue.isOpen(peer)) {
        error = "the browser has no section queue";
    } else {
        return true;
    }
    return false;
}

bool SectionFilters::open(Peer peer, const std::string& session, unsigned int pid,
                          const std::vector<std::uint8_t>& match, const std::vector<std::uint8_t>& mask,
                          std::string& error) {
    Browser& browser = browsers[peer];
    if (pid >= broadcast::kPidCount) {
        error = "PID " + std::to_string(pid) + " is above 8191";
    } else if (match.size() != mask.size()) {
        error = std::to_string(match.size()) + " bytes to match, " + std::to_string(mask.size()) + " of mask";
    } else if (demux == nullptr) {
        error = "nothing is received";
    } else if (browser.filters.count(session) != 0) {
        error = "the session is open already";
    } else if (mayOpen(peer, browser, session, error)) {
        browser.filters[session].subscription =
            demux->subscribe(static_cast<std::uint16_t>(pid), [this, peer, session, match, mask](si::Bytes section) {
                if (passesFilter(section, match, mask)) {
                    sendTo(peer, session, section);
                }
            });
        return true;
    }
    return false;
}

bool SectionFilters::openPmt(Peer peer, const std::string& session, unsigned int serviceId, std::string& error) {
    Browser& browser = browsers[peer];
    if (!mayOpen(peer, browser, session, error)) {
        return false;
    }
    browser.filters[session].serviceId = serviceId;
    return true;
}

bool SectionFilters::close(Peer peer, const std::string& session) {
    const auto browser = browsers.find(peer);
    if (browser == browsers.end()) {
        return false;
    }
    const auto filter = browser->second.filters.find(session);
    if (filter == browser->second.filters.end()) {
        return false;
    }
    demux->unsubscribe(filter->second.subscription);
    browser->second.filters.erase(filter);
    return true;
}

void SectionFilters::forget(Peer peer) {
    const auto browser = browsers.find(peer);
    if (browser == browsers.end()) {
        return;
    }
    for (const auto& filter : browser->second.filters) {
        demux->unsubscribe(filter.second.subscription);
    }
    browsers.erase(browser);
}

SectionFilters::Totals SectionFilters::totals() const {
    Totals totals;
    for (const auto& browser : browsers) {
        totals.filters += browser.second.filters.size();
        totals.dropped += browser.second.dropped;
    }
    return totals;
}

void SectionFilters::pmtChanged(unsigned int serviceId, si::Bytes section) {
    for (const auto& browser : browsers) {
        for (const auto& filter : browser.second.filters) {
            if (filter.second.subscription == 0 && filter.second.serviceId == serviceId) {
                sendTo(browser.first, filter.first, section);
            }
        }
    }
}

void SectionFilters::sendTo(Peer peer, const std::string& session, si::Bytes section) {
    const auto browser = browsers.find(peer);
    if (browser == browsers.end() || !browser->second.queue) {
        return;
    }
    const std::string_view bytes(reinterpret_cast<const char*>(section.data), section.size);
    const bool isLost = loss != nullptr && *loss && (*loss)(peer, session);
    const bool isQueued = !isLost && browser->second.queue.trySend(session, bytes);
    tap.section(peer, session, bytes, isQueued);
    if (!isQueued) {
        noteDropped(peer, browser->second);
    }
}

void SectionFilters::noteDropped(Peer peer, Browser& browser) {
    ++browser.dropped;
    const std::string text = std::to_string(browser.dropped) + " dropped so far";
    if (const auto line = browser.messages.tell("dropped", text, 1)) {
        BLOG_TAGGED(blog::kUnsupported, "browser %u does not read its sections: %s\n", peer, line->c_str());
    }
}

}  // namespace dtvservice
