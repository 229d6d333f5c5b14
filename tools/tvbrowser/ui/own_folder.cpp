// Makes, locks and removes folders.
#include "own_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string_view>

namespace tvbrowser {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPrefix = "tvbrowser-data-";

/// A folder itself, not what a link leads to; -1 if it cannot be opened.
int openFolder(const std::string& path) {
    return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

bool isOwn(int folder) {
    struct stat status {};
    return fstat(folder, &status) == 0 && status.st_uid == geteuid();
}

void removeAll(const std::string& path) {
    std::error_code ignored;
    fs::remove_all(path, ignored);
}

void removeIfLeft(const std::string& path) {
    const int folder = openFolder(path);
    if (folder < 0) {
        return;
    }
    if (isOwn(folder) && flock(folder, LOCK_EX | LOCK_NB) == 0) {
        removeAll(path);
    }
    close(folder);
}

void removeLeft(const std::string& parent) {
    std::error_code failure;
    for (fs::directory_iterator entry(parent, failure), end; !failure && entry != end; entry.increment(failure)) {
        if (entry->path().filename().string().rfind(kPrefix, 0) == 0) {
            removeIfLeft(entry->path().string());
        }
    }
}

/// Not if another process has removed it as a left one before it was locked.
bool isStillThere(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0;
}

}  // namespace

OwnFolder::OwnFolder() {
    const std::string parent = fs::temp_directory_path().string();
    removeLeft(parent);
    while (!make(parent)) {
    }
}

/// False if another process took the folder for a left one. Where folders have no locks, none is taken for one.
bool OwnFolder::make(const std::string& parent) {
    path_ = parent + "/" + std::string(kPrefix) + "XXXXXX";
    if (mkdtemp(path_.data()) == nullptr) {
        throw std::runtime_error("cannot make a folder in " + parent + ": " + std::strerror(errno));
    }
    lock = openFolder(path_);
    if (lock < 0 && errno != ENOENT) {
        throw std::runtime_error("cannot open the folder " + path_ + ": " + std::strerror(errno));
    }
    const bool isTaken = lock < 0 || (flock(lock, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK);
    if (!isTaken && isStillThere(path_)) {
        return true;
    }
    close(lock);
    removeAll(path_);
    return false;
}

OwnFolder::~OwnFolder() {
    removeAll(path_);
    close(lock);
}

}  // namespace tvbrowser
