// Opens the filters of carousels, and passes their sections on.
#include "carousel_reader.h"

#include <algorithm>

#include "si/download.h"

namespace dvbshell {

using Kind = si::CarouselNews::Kind;

namespace {

constexpr std::uint8_t kPmtTableId = 0x02;

/// The service's PMT as if only these streams had the beginning of a carousel.
si::Pmt withRoots(si::Pmt pmt, const std::vector<unsigned int>& roots) {
    constexpr std::uint8_t kReserved = 0;
    constexpr std::uint8_t kDsmccMessages = 0x0B;
    for (si::Pmt::Stream& stream : pmt.streams) {
        const bool isRoot = std::find(roots.begin(), roots.end(), stream.pid) != roots.end();
        stream.streamType = isRoot ? kDsmccMessages : kReserved;
    }
    return pmt;
}

std::uint16_t numberOf(const Event& event) {
    return static_cast<std::uint16_t>(std::get<std::uint64_t>(event.values.at(0).value));
}

}  // namespace

CarouselReader::CarouselReader(Session& newSession, const si::Pmt& pmt, const std::vector<unsigned int>& roots)
    : session(newSession), queue(newSectionQueue()) {
    carousels.setPmt(withRoots(pmt, roots));
    followPids();
}

void CarouselReader::read(Clock::time_point end, Reports reports, const std::function<bool()>& isEnough) {
    while (!failed) {
        const std::optional<Event> event = session.next(queue, end);
        if (!event || (take(*event, reports) && isEnough())) {
            return;
        }
    }
}

/// Whether something has changed.
bool CarouselReader::take(const Event& event, Reports reports) {
    if (event.section.empty() || !si::crcIsRight(event.section)) {
        return false;
    }
    if (static_cast<std::uint8_t>(event.section[0]) == kPmtTableId) {
        std::string error;
        if (const std::optional<si::Pmt> pmt = si::parsePmt(event.section, error)) {
            carousels.setOtherPmt(*pmt);
            followPids();
        }
        return false;
    }
    const std::vector<si::ServiceCarousels::News> all = carousels.onSection(numberOf(event), event.section);
    followPids();
    for (const si::ServiceCarousels::News& news : all) {
        if (reports == Reports::everything) {
            report(news);
        }
    }
    return measure(numberOf(event), event) || !all.empty();
}

void CarouselReader::followPids() {
    for (const std::uint16_t service : carousels.otherServices()) {
        std::unique_ptr<Filter>& request = pmtRequests[service];
        request = request ? std::move(request) : std::make_unique<Filter>(session, queue, service);
    }
    for (const std::uint16_t pid : carousels.pids()) {
        if (filters.count(pid) != 0) {
            continue;
        }
        for (const std::uint8_t table : {si::kDownloadControlTableId, si::kDownloadDataTableId}) {
            filters[pid].push_back(std::make_unique<Filter>(session, queue, pid, tablePattern(table)));
            if (!filters[pid].back()->isOpen()) {
                fail(session, "the DTV service did not open a filter on PID " + std::to_string(pid));
                failed = true;
                return;
            }
        }
    }
}

/// Of a few blocks, because some come more often than others.
bool CarouselReader::measure(std::uint16_t pid, const Event& event) {
    constexpr std::size_t kMeasuredBlocks = 64;
    const std::optional<si::DownloadBlock> block = si::downloadBlock(event.section);
    if (!block) {
        return false;
    }
    const std::string name = std::to_string(pid) + "." + std::to_string(block->downloadId) + "." +
                             std::to_string(block->moduleId) + "." + std::to_string(block->number);
    const auto known = blocks.find(name);
    if (known == blocks.end()) {
        if (blocks.size() < kMeasuredBlocks) {
            blocks[name] = event.time;
        }
        return false;
    }
    cycle_ = std::max(cycle_, event.time - std::exchange(known->second, event.time));
    return true;
}

CarouselReader::Counts CarouselReader::counts() {
    Counts counts;
    for (const auto& [pid, carousel] : carousels.carousels()) {
        for (const si::ObjectCarousel::ModuleState& module : carousel.modules()) {
            ++counts.modules;
            counts.leftOut += module.isLeftOut ? 1 : 0;
            counts.arrived += !module.isLeftOut && module.blocksHere == module.blocks ? 1 : 0;
        }
    }
    return counts;
}

void CarouselReader::report(const si::ServiceCarousels::News& news) {
    std::string text = "PID " + std::to_string(news.pid) + "  " + news.news.text;
    std::vector<message_fields::FieldValue> values = {namedValue("pid", std::uint64_t{news.pid})};
    const si::ObjectCarousel& carousel = carousels.carousels().at(news.pid);
    if (const std::optional<std::uint32_t> number = carousel.carouselId()) {
        values.push_back(namedValue("carousel_id", std::uint64_t{*number}));
    }
    if (news.news.kind == Kind::module || news.news.kind == Kind::dropped || news.news.kind == Kind::leftOut) {
        values.push_back(namedValue("module_id", std::uint64_t{news.news.moduleId}));
        for (const si::ObjectCarousel::ModuleState& module : carousel.modules()) {
            if (module.id == news.news.moduleId) {
                values.push_back(namedValue("module_version", std::uint64_t{module.version}));
                values.push_back(namedValue("module_size", std::uint64_t{module.size}));
            }
        }
        const Counts now = counts();
        values.push_back(namedValue("modules_arrived", std::uint64_t{now.arrived}));
        values.push_back(namedValue("modules", std::uint64_t{now.modules}));
        text += "  (" + std::to_string(now.arrived) + " of " + std::to_string(now.modules) + ")";
    }
    values.push_back(namedValue("text", text));
    session.report({text}, "carousel", std::move(values));
}

bool CarouselReader::hasBegun() {
    constexpr std::chrono::seconds kLongestToBegin{3};
    const auto& all = carousels.carousels();
    const auto hasBegun = [](const auto& each) { return each.second.carouselId().has_value(); };
    return Clock::now() - begin > kLongestToBegin ? std::any_of(all.begin(), all.end(), hasBegun)
                                                  : std::all_of(all.begin(), all.end(), hasBegun);
}

bool CarouselReader::isComplete() {
    auto& all = carousels.carousels();
    return hasBegun() && std::all_of(all.begin(), all.end(), [](auto& each) {
               return !each.second.carouselId() || each.second.tree()->isComplete();
           });
}

bool CarouselReader::hasModules() {
    return counts().modules != 0;
}

std::string CarouselReader::progress() {
    const Counts now = counts();
    return std::to_string(now.arrived) + " of " + std::to_string(now.modules) + " modules have arrived" +
           (now.leftOut == 0 ? "" : ", " + std::to_string(now.leftOut) + " are left out");
}

std::map<std::uint32_t, std::shared_ptr<const si::CarouselTree>> CarouselReader::trees() {
    std::map<std::uint32_t, std::shared_ptr<const si::CarouselTree>> all;
    for (auto& [pid, carousel] : carousels.carousels()) {
        if (const std::optional<std::uint32_t> number = carousel.carouselId()) {
            all[*number] = carousel.tree();
        }
    }
    return all;
}

}  // namespace dvbshell
