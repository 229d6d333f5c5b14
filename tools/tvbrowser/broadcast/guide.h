// Guide: collects the schedule while it is open.
// Threads: one.
// Blocks:  never.
// Fails:   as Schedule.
#pragma once

#include <vector>

#include "present_programmes.h"
#include "schedule.h"
#include "section_filters.h"

namespace tvbrowser {

class Guide {
public:
    explicit Guide(SectionFilters& newFilters) : filters(newFilters) {}

    bool open();
    bool close();
    /// What comes may be of another broadcast.
    void forget() { schedule.clear(); }
    bool takeNews() { return schedule.takeNews(); }
    /// Of one service, or of all with null; with the present programmes among them.
    json value(const json& argument, const PresentProgrammes& programmes) const;

private:
    SectionFilters& filters;
    std::vector<SectionFilters::Id> filterIds;
    Schedule schedule;
};

}  // namespace tvbrowser
