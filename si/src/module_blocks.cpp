// Collects blocks, and uncompresses modules.
#include "si/module_blocks.h"

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

}  // namespace

std::size_t ModuleBlocks::sizeOf(std::uint16_t number) const {
    const std::size_t begin = std::size_t{number} * blockSize;
    return begin >= size ? 0 : std::min<std::size_t>(blockSize, size - begin);
}

std::string ModuleBlocks::disagrees(const DownloadBlock& block) const {
    const std::size_t blocks = blockCount(size, blockSize);
    const std::string name = "block " + std::to_string(block.number);
    if (block.number >= blocks) {
        return name + " is none of its " + std::to_string(blocks);
    }
    const std::size_t expected = sizeOf(block.number);
    return block.data.size == expected
               ? std::string()
               : name + " has " + std::to_string(block.data.size) + " bytes, not " + std::to_string(expected);
}

/// Grows by doubling, but not beyond the module's size.
void ModuleBlocks::add(const DownloadBlock& block) {
    if (arrived.empty()) {
        arrived.resize(blockCount(size, blockSize));
    }
    const std::size_t needed = bytes.size() + block.data.size;
    if (needed > bytes.capacity()) {
        bytes.reserve(std::min<std::size_t>(size, 2 * needed));
    }
    arrived[block.number] = true;
    places.push_back({block.number, static_cast<std::uint32_t>(bytes.size())});
    bytes.insert(bytes.end(), block.data.data, block.data.data + block.data.size);
}

std::vector<Bytes> ModuleBlocks::inOrder() {
    const auto isBefore = [](const Place& one, const Place& other) { return one.number < other.number; };
    std::sort(places.begin(), places.end(), isBefore);
    std::vector<Bytes> blocks;
    blocks.reserve(places.size());
    for (const Place& place : places) {
        blocks.emplace_back(bytes.data() + place.offset, sizeOf(place.number));
    }
    return blocks;
}

/// Blocks that came in order are the module already.
std::vector<std::uint8_t> ModuleBlocks::take() {
    const auto isInPlace = [this](const Place& place) { return place.offset == std::size_t{place.number} * blockSize; };
    std::vector<std::uint8_t> whole;
    if (std::all_of(places.begin(), places.end(), isInPlace)) {
        whole = std::move(bytes);
    } else {
        whole.reserve(size);
        for (const Bytes& block : inOrder()) {
            whole.insert(whole.end(), block.data, block.data + block.size);
        }
    }
    *this = ModuleBlocks(size, blockSize);
    return whole;
}

std::optional<std::vector<std::uint8_t>> wholeModule(ModuleBlocks& blocks, const DownloadInfo::Module& module,
                                                     std::string& error) {
    if (!module.originalSize) {
        return blocks.take();
    }
    std::vector<std::uint8_t> whole(*module.originalSize);
    if (!Inflater().read(blocks.inOrder(), whole)) {
        error = "it does not uncompress to " + std::to_string(*module.originalSize) + " bytes";
        return std::nullopt;
    }
    return whole;
}

}  // namespace si
