// ModuleBlocks: collects the blocks of one version of a module, in any order, and makes the module of them. Takes
// memory as blocks arrive, not by the size that the list announces.
// Threads: one.
// Blocks:  never.
// Fails:   disagrees() and wholeModule() say why.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "si/download.h"

namespace si {

constexpr std::size_t kMostBlocks = 65536;  // block numbers have 16 bits

constexpr std::size_t blockCount(std::uint32_t size, std::uint16_t blockSize) {
    return blockSize == 0 ? 0 : (std::size_t{size} + blockSize - 1) / blockSize;
}

class ModuleBlocks {
public:
    ModuleBlocks(std::uint32_t newSize, std::uint16_t newBlockSize) : size(newSize), blockSize(newBlockSize) {}

    /// Why the block cannot be part of the module; empty if it can.
    std::string disagrees(const DownloadBlock& block) const;
    bool has(std::uint16_t number) const { return number < arrived.size() && arrived[number]; }
    /// A block that agrees and is new.
    void add(const DownloadBlock& block);
    bool isComplete() const { return places.size() == blockCount(size, blockSize); }
    std::size_t count() const { return places.size(); }
    /// The memory in use.
    std::size_t cost() const { return bytes.capacity() + places.capacity() * sizeof(Place) + arrived.size() / 8; }
    /// The blocks in the order of their numbers. The bytes are valid until the next change.
    std::vector<Bytes> inOrder();
    /// All bytes of a complete module, in order; leaves it empty.
    std::vector<std::uint8_t> take();

private:
    struct Place {
        std::uint16_t number;
        std::uint32_t offset;
    };
    std::size_t sizeOf(std::uint16_t number) const;

    std::uint32_t size;
    std::uint16_t blockSize;
    std::vector<std::uint8_t> bytes;  // in the order of arrival
    std::vector<Place> places;        // likewise
    std::vector<bool> arrived;        // by number
};

/// The bytes of a complete module, uncompressed as its list says; without a value, `error` says why. The blocks are
/// then to be emptied. Takes memory for the original size, which the caller has found small enough.
std::optional<std::vector<std::uint8_t>> wholeModule(ModuleBlocks& blocks, const DownloadInfo::Module& module,
                                                     std::string& error);

}  // namespace si
