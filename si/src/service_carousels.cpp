// Leads carousels to their streams.
#include "si/service_carousels.h"

#include <algorithm>

#include "cursor.h"

namespace si {

namespace {

constexpr std::uint8_t kCarouselIdentifier = 0x13;
constexpr std::uint8_t kDataBroadcastId = 0x66;

/// Streams of type B have DSM-CC messages; those of type D have all kinds (ISO/IEC 13818-6, clause 9.2.3).
bool hasMessages(const Pmt::Stream& stream) {
    constexpr std::uint8_t kTypeB = 0x0B;
    constexpr std::uint8_t kTypeD = 0x0D;
    return stream.streamType == kTypeB || stream.streamType == kTypeD;
}

bool has(const Pmt::Stream& stream, std::uint8_t tag) {
    const auto isIt = [tag](const Descriptor& descriptor) { return descriptor.tag == tag; };
    return std::any_of(stream.descriptors.begin(), stream.descriptors.end(), isIt);
}

/// The service to which a deferred_association_tags_descriptor leads for the tag.
std::optional<std::uint16_t> deferredService(const Descriptors& descriptors, std::uint16_t tag) {
    constexpr std::uint8_t kDeferredAssociationTags = 0x15;
    for (const Descriptor& descriptor : descriptors) {
        Cursor cursor(descriptor.bytes);
        Cursor tags(cursor.takeShort());
        bool isListed = false;
        while (tags.left() >= 2) {
            isListed = tags.number(2) == tag || isListed;
        }
        cursor.take(2);  // transport_stream_id
        const auto service = static_cast<std::uint16_t>(cursor.number(2));
        if (descriptor.tag == kDeferredAssociationTags && isListed && cursor.good()) {
            return service;
        }
    }
    return std::nullopt;
}

std::optional<std::uint16_t> deferredService(const Pmt& pmt, std::uint16_t tag) {
    std::optional<std::uint16_t> service = deferredService(pmt.descriptors, tag);
    for (const Pmt::Stream& stream : pmt.streams) {
        service = service ? service : deferredService(stream.descriptors, tag);
    }
    return service;
}

std::optional<std::uint16_t> pidIn(const Pmt& pmt, std::uint16_t tag) {
    const auto has = [tag](const Pmt::Stream& stream) { return hasAssociationTag(stream, tag); };
    const auto stream = std::find_if(pmt.streams.begin(), pmt.streams.end(), has);
    return stream == pmt.streams.end() ? std::nullopt : std::optional(stream->pid);
}

}  // namespace

std::vector<ServiceCarousels::News> ServiceCarousels::setPmt(const Pmt& newPmt) {
    std::vector<News> news;
    std::map<std::uint16_t, ObjectCarousel> kept;
    for (const Pmt::Stream& stream : newPmt.streams) {
        if (!hasMessages(stream) || kept.size() == kMostCarousels || kept.count(stream.pid) != 0) {
            continue;
        }
        auto node = carousels_.extract(stream.pid);
        if (!node.empty()) {
            kept.insert(std::move(node));
            continue;
        }
        kept.try_emplace(stream.pid, mostBytes, sum);
        for (const auto& [tag, name] : {std::pair(kCarouselIdentifier, "carousel_identifier_descriptor"),
                                        std::pair(kDataBroadcastId, "data_broadcast_id_descriptor")}) {
            if (!has(stream, tag)) {
                news.push_back({stream.pid, {CarouselNews::Kind::warning, 0, std::string("the PMT has no ") + name}});
            }
        }
    }
    carousels_ = std::move(kept);
    pmt = newPmt;
    findRoutes();
    return news;
}

void ServiceCarousels::setOtherPmt(const Pmt& otherPmt) {
    if (otherServices().count(otherPmt.serviceId) != 0 || others.count(otherPmt.serviceId) != 0) {
        others[otherPmt.serviceId] = otherPmt;
        findRoutes();
    }
}

ServiceCarousels::Place ServiceCarousels::placeOf(std::uint16_t associationTag) const {
    Place place;
    place.pid = pidIn(pmt, associationTag);
    if (!place.pid) {
        place.otherService = deferredService(pmt, associationTag);
        const auto other = place.otherService ? others.find(*place.otherService) : others.end();
        place.pid = other == others.end() ? std::nullopt : pidIn(other->second, associationTag);
    }
    return place;
}

std::set<std::uint16_t> ServiceCarousels::otherServices() const {
    std::set<std::uint16_t> services;
    for (const auto& each : carousels_) {
        for (const std::uint16_t tag : each.second.associationTags()) {
            const Place place = placeOf(tag);
            if (place.otherService && others.count(*place.otherService) == 0) {
                services.insert(*place.otherService);
            }
        }
    }
    return services;
}

void ServiceCarousels::findRoutes() {
    routes.clear();
    routedTags = 0;
    for (const auto& [root, carousel] : carousels_) {
        routes[root].insert(root);
        routedTags += carousel.associationTags().size();
        for (const std::uint16_t tag : carousel.associationTags()) {
            if (const std::optional<std::uint16_t> pid = placeOf(tag).pid) {
                routes[*pid].insert(root);
            }
        }
    }
}

std::set<std::uint16_t> ServiceCarousels::pids() const {
    std::set<std::uint16_t> all;
    for (const auto& route : routes) {
        all.insert(route.first);
    }
    return all;
}

/// Whether the stream belongs to a carousel that begins on another one. Its blocks are then not kept twice.
bool ServiceCarousels::isReadElsewhere(std::uint16_t pid) const {
    const std::set<std::uint16_t>& roots = routes.at(pid);
    return std::any_of(roots.begin(), roots.end(), [this, pid](std::uint16_t root) {
        return root != pid && carousels_.at(root).carouselId().has_value();
    });
}

std::vector<ServiceCarousels::News> ServiceCarousels::onSection(std::uint16_t pid, Bytes section) {
    std::vector<News> all;
    const auto route = routes.find(pid);
    if (route == routes.end() || section.size == 0) {
        return all;
    }
    std::size_t tags = routedTags;
    for (const std::uint16_t root : route->second) {
        ObjectCarousel& carousel = carousels_.at(root);
        const bool isRoot = root == pid;
        const bool isBlock = section.data[0] == kDownloadDataTableId;
        if (isRoot && isBlock && !carousel.carouselId() && isReadElsewhere(pid)) {
            continue;
        }
        tags -= carousel.associationTags().size();
        for (CarouselNews& news :
             carousel.onSection(isRoot ? ObjectCarousel::From::root : ObjectCarousel::From::other, section)) {
            all.push_back({root, std::move(news)});
        }
        tags += carousel.associationTags().size();
    }
    if (tags != routedTags) {
        findRoutes();
    }
    return all;
}

}  // namespace si
