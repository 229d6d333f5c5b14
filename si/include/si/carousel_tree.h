// CarouselTree: what an object carousel has at one moment: its directories, and the objects that they name. A tree
// never changes. It keeps its modules in memory, and trees of the same carousel share those that they have in common.
// Threads: any.
// Blocks:  never.
// Fails:   find() says whether an object is not there yet or not at all.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "si/biop.h"

namespace si {

struct ModuleContents;

class CarouselTree {
public:
    /// Directories that are deeper are not visited.
    static constexpr std::size_t kDeepest = 32;

    enum class State {
        here,
        awaited,  ///< the carousel names it, and has not yet sent it
        absent,   ///< no directory names it, or what the directory names is not in the carousel
    };
    /// The object keeps its module, whatever becomes of the tree.
    struct Found {
        State state = State::absent;
        std::shared_ptr<const CarouselObject> object = nullptr;  ///< if it is here
    };
    /// Slashes at the beginning, at the end, and doubled ones do not count; the empty path is the service gateway. A
    /// path through a directory that is not here yet is awaited.
    Found find(const std::string& path) const;

    struct Visited {
        const std::string& path;  ///< without a slash in front
        CarouselObject::Kind kind;
        const ObjectReference& reference;
        Found found;
        std::size_t nameAt = 0;    ///< where the entry's own name, which may have slashes, begins in the path
        std::size_t depth = 0;     ///< 0 for the service gateway
        bool isDescended = false;  ///< a directory whose entries follow
    };
    /// Calls for the service gateway, then for each entry of each directory. A directory under several names is
    /// descended under the first.
    void visit(const std::function<void(const Visited&)>& visitor) const;

    /// Whether all that the directories name was here when the tree was made, all of one state of the carousel.
    bool isComplete() const { return isComplete_; }

private:
    friend class ObjectCarousel;

    struct Module {
        std::uint8_t version = 0;
        std::uint16_t list = 0;  // identification of the DownloadInfoIndication
        std::shared_ptr<const ModuleContents> contents = nullptr;
        bool isLeftOut = false;  // it will not come

        bool operator==(const Module& other) const {
            return version == other.version && contents == other.contents && isLeftOut == other.isLeftOut;
        }
    };
    struct Walk;

    Found objectAt(const ObjectReference& reference) const;
    void visitEntries(const CarouselObject& directory, Walk& walk) const;

    std::optional<ObjectReference> gateway;
    std::map<std::uint16_t, Module> modules;
    std::set<std::uint16_t> lists;  // identifications of those that have come
    bool isComplete_ = false;
};

}  // namespace si
