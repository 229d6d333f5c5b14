// ComponentList: the components of the presented service, as the DTV service reports them one by one, with what only
// the PMT says of them.
// Threads: one.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "si/components.h"
#include "values.h"

namespace tvbrowser {

/// A report of the DTV service; the values are those of DVBServiceListener.
struct ComponentReport {
    std::uint16_t index = 0;
    std::uint32_t type = 0;
    std::uint32_t pid = 0;
    std::uint16_t encoding = 0;
    std::uint16_t aspectRatio = 0;
    std::uint16_t audioChannels = 0;
    std::uint16_t tag = 0;
    bool isScrambled = false;
    std::uint32_t language = 0;
    bool isPresented = false;
};

class ComponentList {
public:
    static constexpr std::uint32_t kTypes = 3;

    /// Another service is presented.
    void clear();
    /// Components that are not in the PMT have gone.
    void setPmt(const si::Pmt& pmt);
    void add(const ComponentReport& report);
    /// Which component of a type is presented: its place and PID, or none. Whether that is new.
    bool select(std::uint32_t type, std::uint32_t index, std::uint16_t pid);
    /// Whether there are as many as the PMT has. Until then, reports are still coming.
    bool isWhole() const { return reports.size() == inPmt.size(); }
    /// Whether they are whole with this one, the last of the PMT.
    bool isLast(std::uint16_t index) const { return isWhole() && index + 1U == inPmt.size(); }
    json value() const;
    /// The types whose components have changed since the last call.
    std::vector<std::uint32_t> news();

private:
    json valueOf(const ComponentReport& report) const;

    struct Place {
        std::uint32_t index;
        std::uint16_t pid;
        friend bool operator==(const Place& one, const Place& other) {
            return one.index == other.index && one.pid == other.pid;
        }
    };
    std::map<std::uint16_t, ComponentReport> reports;  // by index
    std::vector<si::Component> inPmt;
    std::array<std::optional<Place>, kTypes> selected;
    std::map<std::uint32_t, json> told;  // by type
};

}  // namespace tvbrowser
