// EventObjects: the stream event objects of a service's object carousels, which give events their names. Only the
// modules with directories and with these objects are put together, and of those nothing else is kept.
// Threads: one.   Blocks: never.   Fails: never; what does not fit is passed over.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "si/carousel.h"

namespace broadcast {

class EventObjects {
public:
    /// An event by its name in an object.
    struct Named {
        std::uint16_t carouselPid = 0;  ///< on which the carousel's DownloadServerInitiate comes
        std::string path;               ///< of the object, without a slash in front
        std::string name;
        std::uint16_t eventId = 0;
        std::vector<std::uint16_t> associationTags;  ///< of the streams that carry the event
    };

    /// The carousels are those that begin on these PIDs.
    explicit EventObjects(std::set<std::uint16_t> newPids) : pids(std::move(newPids)) {}

    /// A section of one of the PIDs; true when more may be known than before.
    bool onSection(std::uint16_t pid, si::Bytes section);
    const std::vector<Named>& events() const { return events_; }
    /// Every directory of every carousel has been looked through.
    bool isComplete() const { return gateways.size() == pids.size() && missing.empty(); }

private:
    using ModuleId = std::pair<std::uint32_t, std::uint16_t>;  // carousel, module
    struct Module {
        si::DownloadInfo::Module info;
        std::uint16_t blockSize = 0;
        std::map<std::uint16_t, std::vector<std::uint8_t>> blocks;
        bool isComplete = false;
        std::map<std::string, si::CarouselObject> objects;  // by key
    };

    bool onInfo(const si::DownloadInfo& info);
    bool onBlock(const si::DownloadBlock& block);
    void drop(Module& module);
    void finish(Module& module);
    void lookThrough();
    void visit(std::uint16_t pid, const si::ObjectReference& reference, const std::string& path, std::size_t depth);

    std::set<std::uint16_t> pids;
    std::map<std::uint16_t, si::ObjectReference> gateways;  // by PID
    std::map<ModuleId, Module> modules;
    std::set<ModuleId> missing;                          // modules that a directory leads to and that are not complete
    std::set<std::pair<ModuleId, std::string>> visited;  // objects, by the look that is under way
    std::size_t held = 0;                                // bytes of blocks
    std::vector<Named> events_;
};

}  // namespace broadcast
