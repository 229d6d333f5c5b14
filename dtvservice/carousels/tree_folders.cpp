// Writes, links and removes trees.
#include "tree_folders.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

namespace dtvservice {

using How = si::TreeWritten::How;

namespace {

constexpr mode_t kOwnersFolder = 0700;

/// Symbolic links are removed, and not followed.
void removeAll(const std::string& path) {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

std::string problem(const std::string& path) {
    return path + ": " + std::strerror(errno);
}

}  // namespace

TreeFolders::~TreeFolders() {
    isEnding = true;
    tasks.stop();
    if (thread.joinable()) {
        thread.join();
        removeAll(folder);
    }
}

void TreeFolders::removeLeftOvers() {
    struct stat found {};
    if (lstat(folder.c_str(), &found) == 0 && isWorking()) {
        tasks.post([this] { removeAll(folder); });
    }
}

void TreeFolders::show(const std::string& name, std::shared_ptr<const si::CarouselTree> tree, Done done) {
    IsEnded& end = ends[name];
    if (!end) {
        end = std::make_shared<std::atomic<bool>>(false);
    }
    const std::string path = folder + "/" + name + "/tree";
    if (!isWorking()) {
        loop.post([=] { done({path, {How::failed, "the system gives no thread"}}); });
        return;
    }
    tasks.post([=, isEnded = end] {
        const Shown shown{path, write(name, *tree, *isEnded)};
        loop.post([=] { done(shown); });
    });
}

void TreeFolders::remove(const std::string& name) {
    const auto end = ends.extract(name);
    if (!end.empty()) {
        *end.mapped() = true;
        tasks.post([this, name] {
            removeAll(folder + "/" + name);
            places.erase(name);
        });
    }
}

bool TreeFolders::isWorking() {
    if (!thread.joinable()) {
        try {
            thread = std::thread([this] { tasks.run(); });
        } catch (const std::system_error&) {
            return false;
        }
    }
    return true;
}

si::TreeWritten TreeFolders::write(const std::string& name, const si::CarouselTree& tree,
                                   const std::atomic<bool>& isEnded) {
    Place& place = places[name];
    if (std::string why = problemOfFolder(); !why.empty()) {
        return {How::failed, std::move(why)};
    }
    const std::string own = folder + "/" + name;
    if (mkdir(own.c_str(), kOwnersFolder) != 0 && errno != EEXIST) {
        return {How::failed, problem(own)};
    }
    if (place.number > 1) {
        removeAll(pathOf(name, place.number - 1));
        place.oldBytes = 0;
    }
    const std::string path = pathOf(name, place.number + 1);
    si::TreeWritten written = si::writeTree(
        tree, {path, mostBytes - std::min(mostBytes, bytesInAll()), [&] { return !isEnded && !isEnding; }});
    const std::string link = own + "/tree";
    const std::string newLink = link + ".new";
    const std::string target = path.substr(own.size() + 1);
    if (written.how == How::whole &&
        (symlink(target.c_str(), newLink.c_str()) != 0 || std::rename(newLink.c_str(), link.c_str()) != 0)) {
        written.how = How::failed;
        written.error = problem(newLink);
        unlink(newLink.c_str());
    }
    if (written.how != How::whole) {
        removeAll(path);
        return written;
    }
    ++place.number;
    place.oldBytes = std::exchange(place.bytes, written.bytes);
    return written;
}

/// Makes the folder, if it is not there. One that a reader removed is made again.
std::string TreeFolders::problemOfFolder() const {
    struct stat found {};
    if (mkdir(folder.c_str(), kOwnersFolder) == 0) {
        return "";
    }
    if (errno != EEXIST || lstat(folder.c_str(), &found) != 0) {
        return problem(folder);
    }
    return S_ISDIR(found.st_mode) && found.st_uid == geteuid() ? "" : folder + ": is not a folder of this user";
}

std::string TreeFolders::pathOf(const std::string& name, std::uint64_t number) const {
    return folder + "/" + name + "/tree-" + std::to_string(number);
}

std::size_t TreeFolders::bytesInAll() const {
    std::size_t sum = 0;
    for (const auto& [name, place] : places) {
        sum += place.bytes + place.oldBytes;
    }
    return sum;
}

}  // namespace dtvservice
