// Writes trees.
#include "si/tree_folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "si/file_names.h"

namespace si {

using How = TreeWritten::How;
using Kind = CarouselObject::Kind;

namespace {

constexpr mode_t kOwnersFolder = 0700;
constexpr mode_t kOwnersFile = 0600;

/// 0, or the error's number.
int makeFile(const std::string& path, Bytes content) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kOwnersFile);
    if (file < 0) {
        return errno;
    }
    int error = 0;
    for (std::size_t at = 0; at < content.size && error == 0;) {
        const ssize_t written = write(file, content.data + at, content.size - at);
        if (written > 0) {
            at += static_cast<std::size_t>(written);
        } else if (errno != EINTR) {
            error = written == 0 ? ENOSPC : errno;
        }
    }
    return close(file) != 0 && error == 0 ? errno : error;
}

class TreeWriter {
public:
    explicit TreeWriter(const TreeFolder& newFolder) : folder(newFolder) {
        if (mkdir(folder.path.c_str(), kOwnersFolder) != 0 && errno != EEXIST) {
            fail(folder.path, errno);
        }
        levels.push_back({folder.path});
    }

    void onVisited(const CarouselTree::Visited& visited) {
        if (result.how != How::whole) {
            return;
        }
        if (folder.mayGoOn && !folder.mayGoOn()) {
            result.how = How::stopped;
        } else if (visited.depth > 0) {
            place(visited);
        } else if (!visited.isDescended) {
            leaveOut(visited, "has not arrived");
        }
    }
    TreeWritten result;

private:
    /// A folder that is being written. One without a path is left out, and what it has too.
    struct Level {
        std::string path;
        FileNames names = {};
    };

    void place(const CarouselTree::Visited& visited) {
        levels.resize(visited.depth);
        Level& parent = levels.back();
        const std::string name = visited.path.substr(visited.nameAt);
        const std::string own = parent.path.empty() ? "" : parent.names.take(name);
        std::string path = parent.path.empty() ? "" : parent.path + "/" + own;
        if (path.size() > folder.path.size() + TreeFolder::kLongestPath) {
            path.clear();
        }
        const CarouselObject* const object = visited.found.object.get();
        if (object == nullptr || path.empty() || (object->kind == Kind::directory && !visited.isDescended)) {
            leaveOut(visited, path.empty() ? "has too long a path" : whyNotHere(visited));
            path.clear();
        } else if (object->kind == Kind::directory || object->kind == Kind::file) {
            if (own != name) {
                tell("/" + visited.path + ": gets the name " + own);
            }
            make(*object, path);
        }
        if (visited.isDescended) {
            levels.push_back({path});
        }
    }

    void make(const CarouselObject& object, const std::string& path) {
        const bool isFile = object.kind == Kind::file;
        const std::size_t size = TreeFolder::kPlaceOfAnEntry + (isFile ? object.content.size : 0);
        if (size > folder.mostBytes - result.bytes) {
            result.how = How::tooLarge;
            return;
        }
        result.bytes += size;
        const int error = isFile ? makeFile(path, object.content) : mkdir(path.c_str(), kOwnersFolder) != 0 ? errno : 0;
        if (error != 0) {
            fail(path, error);
        } else {
            ++(isFile ? result.files : result.folders);
        }
    }

    static std::string whyNotHere(const CarouselTree::Visited& visited) {
        if (visited.reference.elsewhere) {
            return "leads to another service";
        }
        if (visited.found.object != nullptr) {
            return "is a directory that is there under another name, or too deep";
        }
        return visited.found.state == CarouselTree::State::awaited ? "has not arrived" : "is not in the carousel";
    }

    void leaveOut(const CarouselTree::Visited& visited, const std::string& why) {
        ++result.leftOut;
        tell("/" + visited.path + ": " + why);
    }

    void tell(const std::string& line) const {
        if (folder.tell) {
            folder.tell(line);
        }
    }

    void fail(const std::string& path, int error) {
        result.how = How::failed;
        result.error = path + ": " + std::strerror(error);
    }

    const TreeFolder& folder;
    std::vector<Level> levels;
};

}  // namespace

TreeWritten writeTree(const CarouselTree& tree, const TreeFolder& folder) {
    TreeWriter writer(folder);
    tree.visit([&writer](const CarouselTree::Visited& visited) { writer.onVisited(visited); });
    return writer.result;
}

}  // namespace si
