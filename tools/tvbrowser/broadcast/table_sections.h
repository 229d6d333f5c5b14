// TableSections: the sections of one table, by number. While a new version arrives, the last whole one is still there.
// Threads: one.
// Blocks:  never.
// Fails:   a section whose number is above its last_section_number is left out.
#pragma once

#include <map>

namespace tvbrowser {

/// `Table` has version, sectionNumber and lastSectionNumber.
template <typename Table>
class TableSections {
public:
    void add(const Table& section) {
        if (section.sectionNumber > section.lastSectionNumber) {
            return;
        }
        if (!newest.empty() && !belong(newest.begin()->second, section)) {
            newest.clear();
        }
        newest.insert_or_assign(section.sectionNumber, section);
        if (newest.size() == section.lastSectionNumber + 1U) {
            whole = newest;
        }
    }
    /// The last whole version; what has come, as long as there is none.
    const std::map<unsigned int, Table>& sections() const { return isWhole() ? whole : newest; }
    bool isWhole() const { return !whole.empty(); }
    bool isEmpty() const { return newest.empty(); }

private:
    static bool belong(const Table& one, const Table& other) {
        return one.version == other.version && one.lastSectionNumber == other.lastSectionNumber;
    }

    std::map<unsigned int, Table> newest;
    std::map<unsigned int, Table> whole;
};

}  // namespace tvbrowser
