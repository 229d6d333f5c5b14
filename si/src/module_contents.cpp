// Reads the objects of modules.
#include "module_contents.h"

#include <algorithm>

namespace si {

namespace {

bool isBefore(const CarouselObject& object, const std::string& key) {
    return object.key < key;
}

}  // namespace

const CarouselObject* ModuleContents::find(const std::string& key) const {
    const auto found = std::lower_bound(objects.begin(), objects.end(), key, isBefore);
    return found == objects.end() || found->key != key ? nullptr : &*found;
}

std::shared_ptr<const ModuleContents> contentsOf(ModuleBlocks& blocks, const DownloadInfo::Module& module,
                                                 std::size_t mostBytes, const ByteSum& sum, std::string& error,
                                                 bool& isTooMuch) {
    std::optional<std::vector<std::uint8_t>> bytes = wholeModule(blocks, module, error);
    if (!bytes) {
        return nullptr;
    }
    const auto contents = std::make_shared<ModuleContents>(ModuleContents{std::move(*bytes), {}, HeldBytes(sum)});
    std::size_t cost = 0;
    std::optional<std::vector<CarouselObject>> objects = carouselObjects(contents->bytes, mostBytes, cost);
    isTooMuch = !objects;
    if (isTooMuch) {
        error = "no memory is left for its objects";
        return nullptr;
    }
    contents->objects = std::move(*objects);
    std::stable_sort(contents->objects.begin(), contents->objects.end(),
                     [](const CarouselObject& one, const CarouselObject& other) { return one.key < other.key; });
    contents->held.set(contents->bytes.capacity() + cost);
    return contents;
}

}  // namespace si
