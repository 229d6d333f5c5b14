// OwnFolder: a new folder for temporary files of this process, which is removed at the end. Removes also what killed
// processes of the same user have left of theirs: a living one holds a lock on its folder.
// Threads: one.
// Blocks:  while it removes files.
// Fails:   the constructor throws std::runtime_error when it cannot make the folder.
#pragma once

#include <string>

namespace tvbrowser {

class OwnFolder {
public:
    OwnFolder();
    OwnFolder(const OwnFolder&) = delete;
    OwnFolder& operator=(const OwnFolder&) = delete;
    ~OwnFolder();

    const std::string& path() const { return path_; }

private:
    bool make(const std::string& parent);

    std::string path_;
    int lock = -1;  // the folder, open and locked
};

}  // namespace tvbrowser
