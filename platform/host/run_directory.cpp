// Creates and checks the run directory.
#include "run_directory.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "host_log.h"

namespace host {

bool prepareRunDirectory(const std::string& directory) {
    if (mkdir(directory.c_str(), 0700) != 0 && errno != EEXIST) {
        BLOG_TAGGED(blog::kFailure, "cannot create run directory %s: %s\n", directory.c_str(), std::strerror(errno));
        return false;
    }
    // lstat(), because a symbolic link from another user must not pass as our directory.
    struct stat found {};
    if (lstat(directory.c_str(), &found) != 0) {
        BLOG_TAGGED(blog::kFailure, "cannot look at run directory %s: %s\n", directory.c_str(), std::strerror(errno));
        return false;
    }
    if (!S_ISDIR(found.st_mode)) {
        BLOG_TAGGED(blog::kFailure, "run directory %s is not a directory\n", directory.c_str());
        return false;
    }
    if (found.st_uid != geteuid()) {
        BLOG_TAGGED(blog::kFailure, "run directory %s belongs to user %u, not to us\n", directory.c_str(),
                    static_cast<unsigned int>(found.st_uid));
        return false;
    }
    if ((found.st_mode & 077U) != 0) {
        BLOG_TAGGED(blog::kFailure, "run directory %s is open to others (mode %03o, 700 needed)\n", directory.c_str(),
                    static_cast<unsigned int>(found.st_mode & 0777U));
        return false;
    }
    return true;
}

}  // namespace host
