// Completion at the prompt: commands, their options, and channels.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <set>
#include <string>
#include <vector>

namespace dvbshell {

/// The words that the last word of the line may become. `channels`: triplets as texts.
std::vector<std::string> completionsOf(const std::string& line, const std::set<std::string>& channels);
/// The beginning that all words share.
std::string commonBeginning(const std::vector<std::string>& words);

}  // namespace dvbshell
