// TreeFolders: the trees of mounted carousels as folders of the file system, written and removed on a thread of its
// own.
//
//   FOLDER/NAME/tree      a symbolic link to the newest tree: the path that readers get
//   FOLDER/NAME/tree-7    the newest tree; the one before stays until the next is written
//
// A tree is written in a folder that nobody knows yet. Then rename() puts a new link over the old one, which the file
// system does in one step. So a reader that opens the link, or resolves it once, has one tree with all its files, and
// keeps it until the second next one is written.
//
// Threads: the loop's; the work is done on the thread of this object, which the first work starts.
// Blocks:  only the destructor, until everything is removed.
// Locks:   none but those of the two loops.
// Fails:   the result says why a tree is not shown; then the one before stays.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <thread>

#include "event_loop.h"
#include "si/tree_folder.h"

namespace dtvservice {

class TreeFolders {
public:
    /// Of all trees in the file system, old ones that stay and new ones that are written included; with
    /// TreeFolder::kPlaceOfAnEntry for each file and folder.
    static constexpr std::size_t kMostBytes = std::size_t{256} << 20U;

    struct Shown {
        std::string path;  ///< of the link; it stays the same
        si::TreeWritten written;
    };
    /// Runs on the loop's thread.
    using Done = std::function<void(const Shown& shown)>;

    /// The loop must outlive this object, and run no task after this object ends.
    TreeFolders(EventLoop& newLoop, std::string newFolder, std::size_t newMostBytes = kMostBytes)
        : loop(newLoop), folder(std::move(newFolder)), mostBytes(newMostBytes) {}
    TreeFolders(const TreeFolders&) = delete;
    TreeFolders& operator=(const TreeFolders&) = delete;
    ~TreeFolders();

    /// Removes what a killed service has left. Call this before anything else, once no other service uses the folder.
    void removeLeftOvers();
    /// Shows the tree under the name, instead of the one before. A name that was removed is not used again.
    void show(const std::string& name, std::shared_ptr<const si::CarouselTree> tree, Done done);
    /// Removes the name with its trees. What is being written for it ends early; nobody is told.
    void remove(const std::string& name);

private:
    /// What the file system has under a name. Used by the working thread only.
    struct Place {
        std::uint64_t number = 0;  // of the newest tree
        std::size_t bytes = 0;     // of it
        std::size_t oldBytes = 0;  // of the one before
    };
    using IsEnded = std::shared_ptr<std::atomic<bool>>;

    /// Starts the thread, if it does not run; false if the system gives none.
    bool isWorking();
    si::TreeWritten write(const std::string& name, const si::CarouselTree& tree, const std::atomic<bool>& isEnded);
    std::string problemOfFolder() const;
    std::string pathOf(const std::string& name, std::uint64_t number) const;
    std::size_t bytesInAll() const;

    EventLoop& loop;
    const std::string folder;
    const std::size_t mostBytes;
    std::map<std::string, IsEnded> ends;  // by name; used by the loop's thread
    std::atomic<bool> isEnding{false};    // this object
    std::map<std::string, Place> places;  // by name; used by the working thread
    EventLoop tasks;
    std::thread thread;
};

}  // namespace dtvservice
