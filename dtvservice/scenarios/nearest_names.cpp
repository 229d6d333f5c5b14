// Compares names.
#include "nearest_names.h"

#include <algorithm>
#include <numeric>

namespace dtvservice {

namespace {

/// The least number of letters to change, insert or leave out, to come from one name to the other.
std::size_t distanceOf(const std::string& one, const std::string& other) {
    std::vector<std::size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t line = 0; line < one.size(); ++line) {
        std::size_t diagonal = row[0];
        row[0] = line + 1;
        for (std::size_t column = 0; column < other.size(); ++column) {
            const std::size_t changed = diagonal + (one[line] == other[column] ? 0 : 1);
            diagonal = row[column + 1];
            row[column + 1] = std::min({changed, diagonal + 1, row[column] + 1});
        }
    }
    return row.back();
}

}  // namespace

std::string nearestNames(const std::string& wrong, std::vector<std::string> names) {
    constexpr std::size_t kMostTold = 3;
    constexpr std::size_t kLongest = 100;  // no name is longer, so the rest tells nothing
    const std::string start = wrong.substr(0, kLongest);
    std::stable_sort(names.begin(), names.end(), [&start](const std::string& one, const std::string& other) {
        return distanceOf(start, one) < distanceOf(start, other);
    });
    std::string text;
    for (std::size_t index = 0; index < std::min(names.size(), kMostTold); ++index) {
        text += (index == 0 ? "" : ", ") + names[index];
    }
    return text;
}

}  // namespace dtvservice
