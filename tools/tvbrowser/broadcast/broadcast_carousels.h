// BroadcastCarousels: reads the object carousels of the presented service by section filters, from read() to stop(). It
// opens filters for the streams that the carousels name, also for those of other services of the multiplex, to which
// deferred association tags lead.
// Threads: one.
// Blocks:  never.
// Fails:   a carousel that does not come keeps its objects awaited. `log` gets what is wrong with a carousel.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "section_filters.h"
#include "si/service_carousels.h"

namespace tvbrowser {

class BroadcastCarousels {
public:
    using Found = si::CarouselTree::Found;
    using Log = std::function<void(const std::string&)>;

    /// `newChange`: what find() would say may be other than what it has said last.
    BroadcastCarousels(SectionFilters& newFilters, std::size_t newMostBytes, std::function<void()> newChange,
                       Log newLog = {})
        : filters(newFilters), mostBytes(newMostBytes), change(std::move(newChange)), log(std::move(newLog)) {}
    BroadcastCarousels(const BroadcastCarousels&) = delete;
    BroadcastCarousels& operator=(const BroadcastCarousels&) = delete;
    ~BroadcastCarousels() { stop(); }

    /// Reads the carousels of the service with this PMT, or goes on with those that it keeps.
    void read(const si::Pmt& newPmt);
    void stop();
    bool isReading() const { return carousels.has_value(); }
    /// The object in each carousel that is meant. `componentTag`: of the carousel's stream; absent: all carousels.
    std::vector<Found> find(std::optional<std::uint8_t> componentTag, const std::string& path);

private:
    struct Table {
        std::uint16_t pid;
        std::uint8_t id;

        bool operator<(const Table& other) const { return pid == other.pid ? id < other.id : pid < other.pid; }
    };
    using Receive = void (BroadcastCarousels::*)(std::uint16_t pid, si::Bytes section);

    /// Opens the filters of the tables that are needed, and closes the others.
    void follow();
    std::map<Table, Receive> wanted() const;
    void onSection(std::uint16_t pid, si::Bytes section);
    void onPat(std::uint16_t pid, si::Bytes section);
    void onOtherPmt(std::uint16_t pid, si::Bytes section);
    bool hasChanged();
    void tell(const std::vector<si::ServiceCarousels::News>& news) const;

    SectionFilters& filters;
    const std::size_t mostBytes;
    const std::function<void()> change;
    const Log log;
    si::Pmt pmt;
    std::optional<si::ServiceCarousels> carousels;
    std::map<std::uint16_t, std::shared_ptr<const si::CarouselTree>> seen;  // by find() since the last change; by PID
    std::map<std::uint16_t, std::uint16_t> pmtPids;                         // by service, of the PAT
    std::map<Table, SectionFilters::Id> open;
};

}  // namespace tvbrowser
