// ModuleContents: a whole module, uncompressed, with its objects. Never changes.
// Threads: any.
// Blocks:  never.
// Fails:   contentsOf() gives the reason.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "held_bytes.h"
#include "si/biop.h"
#include "si/module_blocks.h"

namespace si {

struct ModuleContents {
    std::vector<std::uint8_t> bytes;
    std::vector<CarouselObject> objects;  ///< by key
    HeldBytes held;

    /// Null if there is no such object.
    const CarouselObject* find(const std::string& key) const;
};

/// Takes the bytes out of the blocks. Without a value, `error` says why; `isTooMuch` if the objects take more memory
/// than `mostBytes`.
std::shared_ptr<const ModuleContents> contentsOf(ModuleBlocks& blocks, const DownloadInfo::Module& module,
                                                 std::size_t mostBytes, const ByteSum& sum, std::string& error,
                                                 bool& isTooMuch);

}  // namespace si
