// Opens the filters of EIT schedule.
#include "guide.h"

namespace tvbrowser {

namespace {

constexpr unsigned int kEitPid = 0x12;
constexpr std::uint8_t kScheduleActualTables = 0x50;
constexpr std::uint8_t kScheduleOtherTables = 0x60;
constexpr std::uint8_t kUpperHalf = 0xF0;

}  // namespace

bool Guide::open() {
    if (!filterIds.empty()) {
        return true;
    }
    for (const std::uint8_t tables : {kScheduleActualTables, kScheduleOtherTables}) {
        filterIds.push_back(filters.open(kEitPid, SectionFilters::Pattern::table(tables, kUpperHalf),
                                         SectionFilters::Repetitions::skipped,
                                         [this](si::Bytes section) { schedule.add(section); }));
    }
    return true;
}

bool Guide::close() {
    for (const SectionFilters::Id id : filterIds) {
        filters.close(id);
    }
    filterIds.clear();
    schedule.clear();
    return true;
}

json Guide::value(const json& argument, const PresentProgrammes& programmes) const {
    std::vector<si::Eit> present;
    for (const std::optional<si::Eit>& section : programmes.sections()) {
        if (section) {
            present.push_back(*section);
        }
    }
    const bool isOfAll = argument.is_null();
    const std::optional<si::Triplet> service =
        isOfAll ? std::nullopt : std::optional(Arguments("schedule", argument).triplet());
    return schedule.value(service, present);
}

}  // namespace tvbrowser
