// EventObjects: the stream event objects of a service's object carousels, which give events their names. Only the
// modules with directories and with these objects are put together, and of those nothing else is kept, and not more
// than a limit. Threads: one.   Blocks: never.   Fails: never; what does not fit is passed over.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <tuple>
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

    static constexpr std::size_t kMostKept = 16 * 1024 * 1024;

    /// The carousels are those that begin on these PIDs. Of what their modules have, so many bytes are kept, and of the
    /// ways through it as many again.
    explicit EventObjects(std::set<std::uint16_t> newPids, std::size_t newMostKept = kMostKept)
        : pids(std::move(newPids)), mostKept(newMostKept) {}

    /// A section of one of the PIDs; true when more may be known than before.
    bool onSection(std::uint16_t pid, si::Bytes section);
    const std::vector<Named>& events() const { return events_; }
    /// Every directory of every carousel has been looked through.
    bool isComplete() const { return gateways.size() == pids.size() && waiting.empty(); }
    /// Something was above the limit; events may be missing though the carousels are complete.
    bool hasPassedOver() const { return passedOver; }

private:
    using ModuleId = std::pair<std::uint32_t, std::uint16_t>;  // carousel, module
    struct Module {
        si::DownloadInfo::Module info;
        std::uint16_t blockSize = 0;
        std::map<std::uint16_t, std::vector<std::uint8_t>> blocks;
        bool isComplete = false;
        std::map<std::string, si::CarouselObject> objects;  // by key
        std::size_t kept = 0;                               // bytes of objects, about
    };
    /// An object as a way leads to it.
    struct Place {
        std::uint16_t pid = 0;  // of the carousel
        ModuleId module;
        std::string key;
        std::string path;
        std::size_t depth = 0;
    };

    bool onInfo(const si::DownloadInfo& info);
    bool onBlock(const si::DownloadBlock& block);
    void drop(Module& module);
    void finish(Module& module);
    void keep(Module& module, si::CarouselObject object);
    void lookThrough();
    void goOnIn(const ModuleId& id);
    void visit(Place place);
    void look(const Place& place);
    bool note(std::size_t bytes);

    std::set<std::uint16_t> pids;
    std::size_t mostKept;
    std::map<std::uint16_t, si::ObjectReference> gateways;  // by PID
    std::map<ModuleId, Module> modules;
    std::map<ModuleId, std::vector<Place>> waiting;  // what was come to in modules that are not complete
    std::set<std::tuple<std::uint16_t, ModuleId, std::string>> visited;  // objects, by the carousel's PID
    std::size_t held = 0;                                                // bytes of blocks
    std::size_t kept = 0;                                                // bytes of objects, about
    std::size_t noted = 0;                                               // bytes of visited and what they led to
    bool passedOver = false;
    std::vector<Named> events_;
};

}  // namespace broadcast
