// EventObjects: finds the stream event objects of a service's object carousels, which give the events their names. It
// reads only the modules that contain the directories and these objects, and keeps nothing else of them. Limits bound
// the memory.
// Threads: one.
// Blocks:  never.
// Fails:   never; objects above the limit and malformed data are ignored.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "si/module_blocks.h"

namespace broadcast {

class EventObjects {
public:
    /// A named event of a stream event object.
    struct Named {
        std::uint16_t carouselPid = 0;  ///< PID of the carousel's DownloadServerInitiate
        std::string path;               ///< of the object, without a leading slash
        std::string name;
        std::uint16_t eventId = 0;
        std::vector<std::uint16_t> associationTags;  ///< of the streams that carry the event
    };

    static constexpr std::size_t kMostKept = std::size_t{16} * 1024 * 1024;

    /// Reads the carousels whose DownloadServerInitiate is on one of these PIDs. Keeps at most `newMostKept` bytes of
    /// objects, and as many again for paths and events found.
    explicit EventObjects(std::set<std::uint16_t> newPids, std::size_t newMostKept = kMostKept)
        : pids(std::move(newPids)), mostKept(newMostKept) {}

    /// A section of one of the PIDs. True if events(), searches() or isComplete() may have changed.
    bool onSection(std::uint16_t pid, si::Bytes section);
    /// In the order in which they were found. Grows until the next search begins.
    const std::vector<Named>& events() const { return events_; }
    /// Where events() has the events of this name, in ascending order.
    const std::vector<std::size_t>& placesOf(const std::string& name) const;
    /// The number of searches from the service gateways on; each begins with no events.
    std::uint64_t searches() const { return searches_; }
    /// Whether every directory of every carousel has been read.
    bool isComplete() const { return gateways.size() == pids.size() && waiting.empty() && !isStale; }
    /// Whether something exceeded the limit. Events may then be missing although isComplete() is true.
    bool hasPassedOver() const { return passedOver; }

private:
    using ModuleId = std::pair<std::uint32_t, std::uint16_t>;  // carousel, module
    struct Module {
        si::DownloadInfo::Module info;
        std::uint16_t blockSize = 0;
        si::ModuleBlocks blocks{0, 0};
        bool isComplete = false;
        std::map<std::string, si::CarouselObject> objects;  // by key
        std::size_t held = 0;                               // bytes of blocks
        std::size_t kept = 0;                               // approximate bytes of objects
    };
    /// An object and the path that leads to it.
    struct Place {
        std::uint16_t pid = 0;  // of the carousel
        ModuleId module;
        std::string key;
        std::string path;
        std::size_t depth = 0;
    };

    bool onInfo(const si::DownloadInfo& info);
    bool onBlock(const si::DownloadBlock& block);
    void hold(Module& module);
    void empty(Module& module);
    void drop(Module& module);
    void finish(Module& module);
    void keep(Module& module, si::CarouselObject object);
    void lookThrough();
    void lookThroughSoon();
    void goOnIn(const ModuleId& id);
    void visit(Place place);
    void look(const Place& place);
    bool note(std::size_t bytes);

    std::set<std::uint16_t> pids;
    std::size_t mostKept;
    std::map<std::uint16_t, si::ObjectReference> gateways;  // by PID
    std::map<ModuleId, Module> modules;
    std::map<ModuleId, std::vector<Place>> waiting;  // objects to read once their module is complete
    std::set<std::tuple<std::uint16_t, ModuleId, std::string>> visited;  // objects: carousel's PID, module, key
    std::size_t held = 0;                                                // bytes of blocks
    std::size_t kept = 0;                                                // approximate bytes of objects
    std::size_t noted = 0;                                               // bytes of visited, waiting and events_
    bool passedOver = false;
    std::vector<Named> events_;
    std::map<std::string, std::vector<std::size_t>> places;  // in events_, by name
    std::uint64_t searches_ = 0;
    std::size_t received = 0;  // bytes of sections since the last search
    bool isStale = false;      // a search has to follow
};

}  // namespace broadcast
