// A line of the prompt as words, and the end of a line that is being typed.
// Threads: any.
// Blocks:  never.
// Fails:   with a text that says which quote is open.
#pragma once

#include <string>
#include <vector>

namespace dvbshell {

/// Splits a line into words at blanks. Single and double quotes keep blanks in a word. False, with the reason, when a
/// quote is not closed.
bool splitWords(const std::string& line, std::vector<std::string>& words, std::string& error);

}  // namespace dvbshell
