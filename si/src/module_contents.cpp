// Uncompresses modules and reads their objects.
#include "module_contents.h"

#include <zlib.h>

#include <algorithm>

namespace si {

namespace {

/// Ends the stream, however the reading goes.
class Inflater {
public:
    Inflater() { isReady = inflateInit(&stream) == Z_OK; }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;
    ~Inflater() { inflateEnd(&stream); }

    /// False if the blocks are no such stream, or give more than `whole` has room for.
    bool read(const std::vector<Bytes>& blocks, std::vector<std::uint8_t>& whole) {
        stream.next_out = whole.data();
        stream.avail_out = static_cast<uInt>(whole.size());
        int result = isReady ? Z_OK : Z_MEM_ERROR;
        for (const Bytes& block : blocks) {
            stream.next_in = const_cast<Bytef*>(block.data);  // zlib reads only
            stream.avail_in = static_cast<uInt>(block.size);
            if (result == Z_OK && block.size != 0) {
                result = inflate(&stream, Z_NO_FLUSH);
            }
        }
        whole.resize(whole.size() - stream.avail_out);
        return result == Z_STREAM_END;
    }

private:
    z_stream stream{};
    bool isReady = false;
};

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
    const auto contents = std::make_shared<ModuleContents>(ModuleContents{{}, {}, HeldBytes(sum)});
    if (module.originalSize) {
        contents->bytes.resize(*module.originalSize);
        if (!Inflater().read(blocks.inOrder(), contents->bytes)) {
            error = "it does not uncompress to " + std::to_string(*module.originalSize) + " bytes";
            return nullptr;
        }
    } else {
        contents->bytes = blocks.take();
    }
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
