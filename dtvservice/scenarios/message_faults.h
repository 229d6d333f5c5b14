// MessageFaults: which events, commands and sections a fault is for.
// Threads: the loop's.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <optional>
#include <string>

namespace dtvservice {

class MessageFaults {
public:
    enum class Kind { withheld, late, twice, commandDropped, sectionDropped };
    struct Fault {
        std::uint64_t id = 0;
        Kind kind = Kind::withheld;
        std::uint32_t message = 0;              ///< 0: every event or command
        std::uint32_t browser = 0;              ///< 0: every browser
        std::string filter;                     ///< of a section; empty: every filter
        std::uint64_t left = 0;                 ///< how many more; 0: without an end
        std::chrono::duration<double> late{0};  ///< how much later
    };
    using Over = std::function<void(std::uint64_t id)>;

    /// `newOver` is called when a fault has been used as often as it may.
    explicit MessageFaults(Over newOver) : over(std::move(newOver)) {}

    void add(Fault fault) { faults.push_back(std::move(fault)); }
    void remove(std::uint64_t id) {
        faults.remove_if([id](const Fault& fault) { return fault.id == id; });
    }
    void clear() { faults.clear(); }

    /// What happens to an event, by the first fault that is for it.
    std::optional<Fault> ofEvent(std::uint32_t browser, std::uint32_t event) {
        return take([&](const Fault& fault) { return fault.kind <= Kind::twice && fits(fault, browser, event); });
    }
    bool dropsCommand(std::uint32_t browser, std::uint32_t command) {
        return take([&](const Fault& fault) {
                   return fault.kind == Kind::commandDropped && fits(fault, browser, command);
               })
            .has_value();
    }
    bool dropsSection(std::uint32_t browser, const std::string& filter) {
        return take([&](const Fault& fault) {
                   return fault.kind == Kind::sectionDropped && fits(fault, browser, 0) &&
                          (fault.filter.empty() || fault.filter == filter);
               })
            .has_value();
    }

private:
    static bool fits(const Fault& fault, std::uint32_t browser, std::uint32_t message) {
        return (fault.message == 0 || fault.message == message) && (fault.browser == 0 || fault.browser == browser);
    }
    template <typename Condition>
    std::optional<Fault> take(Condition isMeant) {
        for (auto fault = faults.begin(); fault != faults.end(); ++fault) {
            if (isMeant(*fault)) {
                Fault found = *fault;
                if (fault->left == 1) {
                    faults.erase(fault);
                    over(found.id);
                } else if (fault->left != 0) {
                    --fault->left;
                }
                return found;
            }
        }
        return std::nullopt;
    }

    Over over;
    std::list<Fault> faults;
};

}  // namespace dtvservice
