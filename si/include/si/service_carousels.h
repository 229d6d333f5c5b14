// ServiceCarousels: the object carousels of one service, each with its streams, as the PMT has them (TS 102 809, Annex
// B.3). The caller filters the DSM-CC sections (kDownloadControlTableId, kDownloadDataTableId) of pids(), which change
// with each call.
//
// A stream that a carousel names by association tag is one of the service, or of another service of the multiplex to
// which a deferred_association_tags_descriptor leads; otherServices() are then those whose PMTs are missing.
//
// Descriptors that are missing keep no carousel from being read: every stream of DSM-CC messages is taken for one with
// a DownloadServerInitiate. Memory: that of kMostCarousels, which share ObjectCarousel::kMostBytes.
// Threads: one; trees belong to any.
// Blocks:  never.
// Fails:   news say what is missing.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "si/carousel.h"
#include "si/tables.h"

namespace si {

class ServiceCarousels {
public:
    static constexpr std::size_t kMostCarousels = 16;

    /// Of the carousel on a PID.
    struct News {
        std::uint16_t pid;
        CarouselNews news;
    };

    explicit ServiceCarousels(std::size_t newMostBytes = ObjectCarousel::kMostBytes) : mostBytes(newMostBytes) {}

    /// The service's PMT, whenever it changes. A carousel goes on if its PID remains. Returns the warnings.
    std::vector<News> setPmt(const Pmt& newPmt);
    /// The PMT of another service.
    void setOtherPmt(const Pmt& otherPmt);
    /// The services of the multiplex whose PMTs would lead to more streams.
    std::set<std::uint16_t> otherServices() const;

    std::set<std::uint16_t> pids() const;
    /// A section of one of them.
    std::vector<News> onSection(std::uint16_t pid, Bytes section);

    /// By the PID of the stream with the DownloadServerInitiate. One that has no carouselId() has had none yet.
    std::map<std::uint16_t, ObjectCarousel>& carousels() { return carousels_; }

private:
    struct Place {
        std::optional<std::uint16_t> pid = std::nullopt;
        std::optional<std::uint16_t> otherService = std::nullopt;  // that has the stream
    };
    Place placeOf(std::uint16_t associationTag) const;
    void findRoutes();
    bool isReadElsewhere(std::uint16_t pid) const;

    std::size_t mostBytes;
    ByteSum sum = std::make_shared<std::atomic<std::size_t>>(0);
    Pmt pmt;
    std::map<std::uint16_t, Pmt> others;  // by service
    std::map<std::uint16_t, ObjectCarousel> carousels_;
    std::map<std::uint16_t, std::set<std::uint16_t>> routes;  // by PID, the roots of the carousels that hear it
    std::size_t routedTags = 0;
};

}  // namespace si
