// Collects blocks.
#include "module_blocks.h"

#include <algorithm>

namespace si {

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

}  // namespace si
