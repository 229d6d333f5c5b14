// FileNames: the names that the entries of one folder of the file system get, from names that a broadcaster has chosen.
// Each is safe as a name of a file, and no two of them are the same.
//
//  1. Slashes, control characters, and what makes a name "." or ".." become %XX; an empty name becomes "%".
//  2. A name of more than kLongest bytes is cut.
//  3. A name that there is already gets "~2", "~3", ….
//
// Other names stay as they are.
// Threads: one.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <cstddef>
#include <map>
#include <string>

namespace si {

class FileNames {
public:
    static constexpr std::size_t kLongest = 200;  // with room for what a name gets, up to the 255 of most systems

    /// The name of the next entry.
    std::string take(const std::string& name);

private:
    std::map<std::string, std::size_t> taken;  // the number that the next one of that name tries
};

}  // namespace si
