// Finds objects in carousels.
#include "si/carousel_tree.h"

#include <algorithm>

#include "module_contents.h"
#include "si/download.h"

namespace si {

using Kind = CarouselObject::Kind;

/// Of a visit: the path so far, and the directories that it has seen.
struct CarouselTree::Walk {
    const std::function<void(const Visited&)>& visitor;
    std::string path = {};
    std::size_t depth = 0;
    std::set<const CarouselObject*> seen = {};
};

/// A module number is unique in its carousel, so the carousel's number, which some broadcasters write wrongly, is not
/// compared.
CarouselTree::Found CarouselTree::objectAt(const ObjectReference& reference) const {
    if (reference.elsewhere) {
        return {};
    }
    const auto module = modules.find(reference.moduleId);
    if (module == modules.end()) {
        const bool hasItsList =
            reference.delivery && lists.count(identificationOf(reference.delivery->transactionId)) != 0;
        return {hasItsList ? State::absent : State::awaited};
    }
    const std::shared_ptr<const ModuleContents>& contents = module->second.contents;
    if (!contents) {
        return {module->second.isLeftOut ? State::absent : State::awaited};
    }
    const CarouselObject* const object = contents->find(reference.key);
    return object == nullptr ? Found() : Found{State::here, std::shared_ptr<const CarouselObject>(contents, object)};
}

CarouselTree::Found CarouselTree::find(const std::string& path) const {
    Found found = gateway ? objectAt(*gateway) : Found{State::awaited};
    for (std::size_t at = path.find_first_not_of('/'); at != std::string::npos && found.object;) {
        const std::size_t end = std::min(path.find('/', at), path.size());
        const std::string name = path.substr(at, end - at);
        const auto& entries = found.object->entries;
        const auto entry =
            std::find_if(entries.begin(), entries.end(), [&name](const auto& each) { return each.name == name; });
        found = entry == entries.end() ? Found() : objectAt(entry->object);
        at = path.find_first_not_of('/', end);
    }
    return found;
}

void CarouselTree::visit(const std::function<void(const Visited&)>& visitor) const {
    if (gateway) {
        Walk walk{visitor};
        const Found found = objectAt(*gateway);
        visitor({walk.path, Kind::directory, *gateway, found, 0, 0, found.object != nullptr});
        if (found.object) {
            walk.seen.insert(found.object.get());
            visitEntries(*found.object, walk);
        }
    }
}

void CarouselTree::visitEntries(const CarouselObject& directory, Walk& walk) const {
    const std::size_t length = walk.path.size();
    ++walk.depth;
    for (const CarouselObject::Entry& entry : directory.entries) {
        walk.path += (length == 0 ? "" : "/") + entry.name;
        const Found found = objectAt(entry.object);
        const bool isDescended = found.object && found.object->kind == Kind::directory && walk.depth < kDeepest &&
                                 walk.seen.insert(found.object.get()).second;
        walk.visitor({walk.path, entry.kind, entry.object, found, walk.path.size() - entry.name.size(), walk.depth,
                      isDescended});
        if (isDescended) {
            visitEntries(*found.object, walk);
        }
        walk.path.resize(length);
    }
    --walk.depth;
}

}  // namespace si
