// Writes the files of a carousel's tree into a folder of the file system, under names that are safe there (FileNames).
// Streams, stream events and what leads to other services are no files.
//
// Nothing that is there is overwritten, and no symbolic link is followed: every file and every folder below the given
// one is made anew.
// Threads: any.
// Blocks:  as long as the file system needs.
// Fails:   the result names what could not be written, and why. What has been written stays.
#pragma once

#include <functional>
#include <string>

#include "si/carousel_tree.h"

namespace si {

struct TreeFolder {
    /// What a file or a folder takes beside its bytes, about.
    static constexpr std::size_t kPlaceOfAnEntry = 4096;
    /// An object with a longer path, below the folder, is left out.
    static constexpr std::size_t kLongestPath = 2048;

    std::string path;                                             ///< made with mode 0700 if it is not there
    std::size_t mostBytes;                                        ///< with kPlaceOfAnEntry for each entry
    std::function<bool()> mayGoOn = nullptr;                      ///< asked before each entry
    std::function<void(const std::string& line)> tell = nullptr;  ///< what is left out or has another name
};

struct TreeWritten {
    enum class How {
        whole,     ///< all that is here
        tooLarge,  ///< it needs more than `mostBytes`
        stopped,   ///< it may not go on
        failed,
    };
    How how = How::whole;
    std::string error = {};  ///< of `failed`: the path and the reason
    std::size_t files = 0;
    std::size_t folders = 0;
    std::size_t bytes = 0;    ///< with kPlaceOfAnEntry for each entry
    std::size_t leftOut = 0;  ///< objects that the tree names but does not have, or whose path is too long
};
TreeWritten writeTree(const CarouselTree& tree, const TreeFolder& folder);

}  // namespace si
